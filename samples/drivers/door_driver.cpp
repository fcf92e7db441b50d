// door.driver: the door controller's text protocol: "#door;state;checksum".

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "door.driver";

/// Decodes to the state, "open" or "closed".
class DoorDriver : public DriverService {
 public:
  std::string Decode(const std::string& frame) const override {
    const std::size_t first = frame.find(';');
    const std::size_t last = frame.rfind(';');
    if (frame.empty() || frame[0] != '#' || first == last) return std::string();
    unsigned sum = 0;
    for (std::size_t i = 1; i < last; ++i) sum += static_cast<unsigned char>(frame[i]);
    if (std::to_string(sum % 100) != frame.substr(last + 1)) return std::string();
    return frame.substr(first + 1, last - first - 1);
  }
};

}  // namespace

bool Init() {
  board::PublishService(kPlugin, std::shared_ptr<DriverService>(std::make_shared<DoorDriver>()));
  IKPXFormatLog(board::kProgress, kPlugin, "decodes the state in the doors' messages");
  return true;
}

bool UnInit() {
  board::Withdraw(kPlugin);
  return true;
}
