// notification.server: tells those who may see an alarm of it, but not twice of the same within a
// while.

#include <map>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Notifier {
 public:
  Notifier(std::shared_ptr<UserService> users, std::vector<std::string> names, int quietMinutes)
      : m_users(std::move(users)), m_names(std::move(names)), m_quietMinutes(quietMinutes) {}

  /// How many people were told.
  int Notify(const EventBusService::Event& event) {
    constexpr int kDay = 24 * 60;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      const auto last = m_lastSent.find(event.text);
      if (last != m_lastSent.end() &&
          (event.minuteOfDay - last->second + kDay) % kDay < m_quietMinutes) {
        return 0;
      }
      m_lastSent[event.text] = event.minuteOfDay;
    }
    int told = 0;
    for (const std::string& name : m_names) told += m_users->Has(name, "alarm.see") ? 1 : 0;
    return told;
  }

 private:
  const std::shared_ptr<UserService> m_users;
  const std::vector<std::string> m_names;
  const int m_quietMinutes;
  std::mutex m_mutex;
  std::map<std::string, int> m_lastSent;  // minute of the day by text; guarded by m_mutex
};

std::shared_ptr<EventBusService> g_bus;
int g_subscription = 0;

}  // namespace

bool Init() {
  const auto users = board::Find<UserService>();
  g_bus = board::Find<EventBusService>();
  if (!g_bus || !users) return false;
  const auto notifier =
      std::make_shared<Notifier>(users, std::vector<std::string>{"ada", "bo", "stranger"}, 10);
  const bool works = notifier->Notify({"alarm", "door open", 23 * 60 + 55}) == 2 &&
                     notifier->Notify({"alarm", "door open", 4}) == 0 &&  // past midnight
                     notifier->Notify({"alarm", "door open", 5}) == 2;
  // First the live ones: an event that comes between the two lines is then met twice, not missed.
  g_subscription = g_bus->Subscribe(
      "alarm", [notifier](const EventBusService::Event& event) { notifier->Notify(event); });
  for (const EventBusService::Event& missed : g_bus->Recent("alarm")) notifier->Notify(missed);
  return works;
}

bool UnInit() {
  if (g_bus) g_bus->Unsubscribe(g_subscription);
  g_bus.reset();
  return true;
}
