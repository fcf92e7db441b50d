// parking.server, brought by an addon: free places, counted by the gates.

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class CarPark {
 public:
  explicit CarPark(int places) : m_free(places) {}

  bool In() {
    if (m_free == 0) return false;
    --m_free;
    return true;
  }

  void Out() { ++m_free; }
  int Free() const { return m_free; }

 private:
  int m_free;
};

}  // namespace

bool Init() {
  const auto devices = board::Find<DeviceService>();
  if (!devices) return false;
  CarPark park(1);
  const bool counted = park.In() && !park.In();
  park.Out();
  return counted && park.Free() == 1;
}

bool UnInit() {
  return true;
}
