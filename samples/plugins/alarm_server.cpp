// alarm.server: the list of open alarms, fed by the event bus.

#include <map>
#include <mutex>
#include <stdexcept>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Alarms : public AlarmService {
 public:
  explicit Alarms(std::size_t limit) : m_limit(limit) {}

  void Raise(const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_open.size() == m_limit) m_open.erase(m_open.begin());  // the oldest goes
    m_open[++m_last] = text;
  }

  std::size_t Open() const override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_open.size();
  }

  bool Acknowledge(int alarm) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_open.erase(alarm) == 1;
  }

 private:
  const std::size_t m_limit;
  mutable std::mutex m_mutex;
  int m_last = 0;                     // guarded by m_mutex
  std::map<int, std::string> m_open;  // guarded by m_mutex
};

std::shared_ptr<EventBusService> g_bus;
int g_subscription = 0;

}  // namespace

bool Init() {
  const auto config = board::Find<ConfigService>();
  g_bus = board::Find<EventBusService>();
  if (!config || !g_bus || !board::Find<DeviceService>()) return false;
  const auto alarms = std::make_shared<Alarms>(std::stoul(config->Value("alarm.limit", "50")));
  g_subscription = g_bus->Subscribe(
      "alarm", [alarms](const EventBusService::Event& event) { alarms->Raise(event.text); });
  g_bus->Publish("alarm", "self test");
  board::Publish<AlarmService>(alarms);
  return alarms->Acknowledge(1) && alarms->Open() == 0;
}

bool UnInit() {
  board::Withdraw(AlarmService::kName);
  if (g_bus) g_bus->Unsubscribe(g_subscription);
  g_bus.reset();
  return true;
}
