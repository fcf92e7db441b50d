// alarm.server: the open alarms. One begins when a device reports what the settings name, and is
// over when the device reports anything else.

#include <map>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "alarm.server";

class Alarms : public AlarmService {
 public:
  Alarms(DeviceService& devices, std::shared_ptr<EventBusService> bus, std::string alarmReading)
      : m_bus(std::move(bus)),
        m_alarmReading(std::move(alarmReading)),
        m_watch(devices.Watch([this](const DeviceService::Device& device,
                                     const std::string& reading) { See(device, reading); })) {}

  std::vector<Alarm> Open() const override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Alarm> open;
    for (const auto& entry : m_open) open.push_back(entry.second);
    return open;
  }

 private:
  void See(const DeviceService::Device& device, const std::string& reading) {
    const Alarm alarm = {device.site, m_alarmReading + " at " + device.site};
    const bool begins = reading == m_alarmReading;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (begins ? !m_open.emplace(device.id, alarm).second : m_open.erase(device.id) == 0) return;
    }
    IKPXFormatLog(board::kProgress, kPlugin, "%s: %s", begins ? "alarm" : "over",
                  alarm.text.c_str());
    m_bus->Publish(begins ? kBegin : kOver, alarm.site, alarm.text);
  }

  const std::shared_ptr<EventBusService> m_bus;
  const std::string m_alarmReading;
  mutable std::mutex m_mutex;
  std::map<std::string, Alarm> m_open;  // by device; guarded by m_mutex
  const Subscription m_watch;
};

}  // namespace

bool Init() {
  const auto config = board::Need<ConfigService>(kPlugin);
  const auto devices = board::Need<DeviceService>(kPlugin);
  const auto bus = board::Need<EventBusService>(kPlugin);
  if (!config || !devices || !bus) return false;
  board::Publish<AlarmService>(
      std::make_shared<Alarms>(*devices, bus, config->Value("alarm.reading", "smoke")));
  return true;
}

bool UnInit() {
  board::Withdraw(AlarmService::kName);
  return true;
}
