#include "tests/contract/LogView.h"

#include <mutex>

#include "reference/base/Log.h"

namespace {

class ObservedLog : public LogView {
 public:
  ObservedLog() {
    ConfigureLog({0, ""});
    SetLogObserver([this](int level, const std::string& module, const std::string& text) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_lines.push_back(std::to_string(level) + " " + module + " " + text);
    });
  }
  ~ObservedLog() override { SetLogObserver({}); }

  std::vector<std::string> Lines() override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
  }

 private:
  std::mutex m_mutex;
  std::vector<std::string> m_lines;  // guarded by m_mutex
};

}  // namespace

std::unique_ptr<LogView> LogView::Make() {
  return std::make_unique<ObservedLog>();
}
