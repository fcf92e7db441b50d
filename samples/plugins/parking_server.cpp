// parking.server, brought by an addon: counts the cars in the car park, by the plates that the
// camera at its entrance reads.

#include <algorithm>
#include <set>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "parking.server";
constexpr double kLatitude = 53.541;
constexpr double kLongitude = 9.97;

class CarPark {
 public:
  CarPark(DeviceService& devices, std::string camera)
      : m_camera(std::move(camera)),
        m_watch(
            devices.Watch([this](const DeviceService::Device& device, const std::string& reading) {
              if (device.id == m_camera) Pass(reading);
            })) {}

 private:
  /// A plate is read once on its way in, and once on its way out.
  void Pass(const std::string& plate) {
    const bool in = m_plates.insert(plate).second;
    if (!in) m_plates.erase(plate);
    IKPXFormatLog(board::kProgress, kPlugin, "%s goes %s, cars inside: %s", plate.c_str(),
                  in ? "in" : "out", std::to_string(m_plates.size()).c_str());
  }

  const std::string m_camera;
  std::set<std::string> m_plates;  // only the watch uses it
  const Subscription m_watch;
};

std::unique_ptr<CarPark> g_carPark;

}  // namespace

bool Init() {
  const auto devices = board::Need<DeviceService>(kPlugin);
  const auto map = board::Need<MapService>(kPlugin);
  if (!devices || !map) return false;
  const std::string site = map->Nearest(kLatitude, kLongitude);
  const auto cameras = devices->OfKind("camera");
  const auto camera = std::find_if(cameras.begin(), cameras.end(),
                                   [&site](const auto& one) { return one.site == site; });
  if (camera == cameras.end()) {
    IKPXFormatLog(board::kFailure, kPlugin, "no camera at \"%s\", the site of the entrance",
                  site.c_str());
    return false;
  }
  g_carPark = std::make_unique<CarPark>(*devices, camera->id);
  return true;
}

bool UnInit() {
  g_carPark.reset();
  return true;
}
