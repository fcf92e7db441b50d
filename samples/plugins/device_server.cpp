// device.server: the registry of the site's devices, kept in storage as one text.

#include <sstream>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Devices : public DeviceService {
 public:
  /// Takes lines of "id kind site".
  explicit Devices(const std::string& text) {
    std::istringstream words(text);
    for (Device device; words >> device.id >> device.kind >> device.site;) {
      m_devices.push_back(device);
    }
  }

  std::vector<Device> OfKind(const std::string& kind) const override {
    std::vector<Device> found;
    for (const Device& device : m_devices) {
      if (device.kind == kind) found.push_back(device);
    }
    return found;
  }

 private:
  std::vector<Device> m_devices;
};

}  // namespace

bool Init() {
  const auto storage = board::Find<StorageService>();
  if (!storage) return false;
  storage->Put("devices",
               "cam-1 camera gate\ncam-2 camera quay\ndoor-1 door gate\nsmoke-1 sensor hall\n");
  const auto devices = std::make_shared<Devices>(storage->Get("devices"));
  board::Publish<DeviceService>(devices);
  return devices->OfKind("camera").size() == 2;
}

bool UnInit() {
  board::Withdraw(DeviceService::kName);
  return true;
}
