// device.server: the site's devices, from a table of the storage, and what they report.

#include <chrono>
#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Every.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "device.server";

using Device = DeviceService::Device;

/// Stands in for the lines to the devices: what this one reports in a second of each minute; empty
/// for nothing.
std::string Reading(const Device& device, int second) {
  if (device.kind == "sensor") return second >= 1 && second < 30 ? "smoke" : "clear";
  if (device.id == "door-1" && second == 1) return "79927398713";
  if (device.id == "cam-1" && (second == 2 || second == 32)) return "HH-A 1";
  return std::string();
}

class Devices : public DeviceService {
 public:
  explicit Devices(std::vector<Device> devices) : m_devices(std::move(devices)) {}

  std::vector<Device> OfKind(const std::string& kind) const override {
    std::vector<Device> found;
    for (const Device& device : m_devices) {
      if (device.kind == kind) found.push_back(device);
    }
    return found;
  }

  Subscription Watch(Handler handler) override { return m_watchers.Add(std::move(handler)); }

 private:
  void Poll() {
    for (const Device& device : m_devices) {
      const std::string reading = Reading(device, m_second);
      if (!reading.empty()) m_watchers.Call(device, reading);
    }
    m_second = (m_second + 1) % 60;
  }

  const std::vector<Device> m_devices;
  Listeners<Device, std::string> m_watchers;
  int m_second = 0;  // the thread's own
  Every m_polls{std::chrono::seconds(1), [this] { Poll(); }};
};

}  // namespace

bool Init() {
  const auto storage = board::Need<StorageService>(kPlugin);
  if (!storage) return false;
  std::vector<Device> devices;
  std::istringstream words(storage->Table("devices"));
  for (Device device; words >> device.id >> device.kind >> device.site;) devices.push_back(device);
  if (devices.empty()) {
    IKPXFormatLog(board::kFailure, kPlugin, "the table \"devices\" lists none");
    return false;
  }
  IKPXFormatLog(board::kProgress, kPlugin, "polls %s devices",
                std::to_string(devices.size()).c_str());
  board::Publish<DeviceService>(std::make_shared<Devices>(std::move(devices)));
  return true;
}

bool UnInit() {
  board::Withdraw(DeviceService::kName);
  return true;
}
