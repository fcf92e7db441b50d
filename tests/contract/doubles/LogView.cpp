#include "tests/contract/LogView.h"

#include "tests/support/Log.h"

namespace {

class RecordedLog : public LogView {
 public:
  RecordedLog() { Log::Instance().Clear(); }

  std::vector<std::string> Lines() override {
    std::vector<std::string> lines;
    for (const LogLine& line : Log::Instance().Lines()) {
      lines.push_back(std::to_string(line.level) + " " + line.module + " " + line.whole);
    }
    return lines;
  }
};

}  // namespace

std::unique_ptr<LogView> LogView::Make() {
  return std::make_unique<RecordedLog>();
}
