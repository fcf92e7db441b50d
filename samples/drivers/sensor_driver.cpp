// sensor.driver: the sensor line's frames: text with two bytes escaped, between two end marks.

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "sensor.driver";

constexpr char kEnd = '\xC0';
constexpr char kEscape = '\xDB';
constexpr char kEscapedEnd = '\xDC';
constexpr char kEscapedEscape = '\xDD';

/// Decodes to the text.
class SensorDriver : public DriverService {
 public:
  std::string Decode(const std::string& frame) const override {
    if (frame.size() < 2 || frame.front() != kEnd || frame.back() != kEnd) return std::string();
    std::string text;
    for (std::size_t i = 1; i + 1 < frame.size(); ++i) {
      if (frame[i] == kEnd) return std::string();
      if (frame[i] != kEscape) {
        text += frame[i];
        continue;
      }
      ++i;  // a frame that ends with an escape has its end mark there
      if (frame[i] != kEscapedEnd && frame[i] != kEscapedEscape) return std::string();
      text += frame[i] == kEscapedEnd ? kEnd : kEscape;
    }
    return text;
  }
};

}  // namespace

bool Init() {
  board::PublishService(kPlugin, std::shared_ptr<DriverService>(std::make_shared<SensorDriver>()));
  IKPXFormatLog(board::kProgress, kPlugin, "decodes the texts in the sensors' frames");
  return true;
}

bool UnInit() {
  board::Withdraw(kPlugin);
  return true;
}
