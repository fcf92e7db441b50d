// parking.server, brought by an addon: the free places of the car park, counted in and out, and
// whose plates a camera at its site has read.

#include <algorithm>
#include <set>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class CarPark {
 public:
  explicit CarPark(std::size_t places) : m_places(places) {}

  /// False when it is full, or when the plate has not left since it came in.
  bool In(const std::string& plate) {
    return m_plates.size() < m_places && m_plates.insert(plate).second;
  }

  /// False for a plate that never came in.
  bool Out(const std::string& plate) { return m_plates.erase(plate) == 1; }

  std::size_t Free() const { return m_places - m_plates.size(); }

 private:
  const std::size_t m_places;
  std::set<std::string> m_plates;
};

bool HasCamera(const DeviceService& devices, const std::string& site) {
  const auto cameras = devices.OfKind("camera");
  return std::any_of(cameras.begin(), cameras.end(),
                     [&site](const auto& camera) { return camera.site == site; });
}

}  // namespace

bool Init() {
  const auto devices = board::Find<DeviceService>();
  const auto map = board::Find<MapService>();
  if (!devices || !map) return false;
  const std::string entrance = map->Nearest(53.541, 9.97);
  if (!HasCamera(*devices, entrance)) return false;  // nobody reads the plates there
  CarPark park(2);
  return park.In("HH-A 1") && !park.In("HH-A 1") && park.In("HH-B 2") && !park.In("HH-C 3") &&
         !park.Out("HH-C 3") && park.Out("HH-A 1") && park.Free() == 1;
}

bool UnInit() {
  return true;
}
