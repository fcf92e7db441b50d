// gate.driver, brought by an addon: the car park's gate reports which of its two light beams, A
// outside and B inside, a passing car has cut, one after the other: "A AB B".

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "gate.driver";

/// Decodes to "in" or "out"; a car that turned back is neither.
class GateDriver : public DriverService {
 public:
  std::string Decode(const std::string& frame) const override {
    if (frame == "A AB B") return "in";
    if (frame == "B AB A") return "out";
    return std::string();
  }
};

}  // namespace

bool Init() {
  board::PublishService(kPlugin, std::shared_ptr<DriverService>(std::make_shared<GateDriver>()));
  IKPXFormatLog(board::kProgress, kPlugin, "decodes which way a car passes the gate");
  return true;
}

bool UnInit() {
  board::Withdraw(kPlugin);
  return true;
}
