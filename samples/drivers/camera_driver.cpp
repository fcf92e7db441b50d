// camera.driver: the camera's status frame: magic, version, 16-bit length, temperature in tenths.

#include <cstdint>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "camera.driver";

/// The byte at `place` of a text, which has it.
int Byte(const std::string& text, std::size_t place) {
  return static_cast<unsigned char>(text[place]);
}

/// Decodes to degrees, "-1.5".
class CameraDriver : public DriverService {
 public:
  std::string Decode(const std::string& frame) const override {
    constexpr int kMagic = 0xCA;
    if (frame.size() != 6 || Byte(frame, 0) != kMagic || Byte(frame, 1) != 1) return std::string();
    if ((Byte(frame, 2) << 8 | Byte(frame, 3)) != 2) return std::string();
    const int tenths = static_cast<std::int16_t>(Byte(frame, 4) << 8 | Byte(frame, 5));
    const int size = tenths < 0 ? -tenths : tenths;
    return (tenths < 0 ? "-" : "") + std::to_string(size / 10) + "." + std::to_string(size % 10);
  }
};

}  // namespace

bool Init() {
  board::PublishService(kPlugin, std::shared_ptr<DriverService>(std::make_shared<CameraDriver>()));
  IKPXFormatLog(board::kProgress, kPlugin, "decodes the temperature in the cameras' status frames");
  return true;
}

bool UnInit() {
  board::Withdraw(kPlugin);
  return true;
}
