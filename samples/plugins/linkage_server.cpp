// linkage.server: rules that join an alarm to an action.

#include <atomic>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

struct Rule {
  std::string word;    // in the alarm's text
  std::string action;  // the topic to publish on
};

class Linkage : public LinkageService {
 public:
  Linkage(std::shared_ptr<EventBusService> bus, std::vector<Rule> rules)
      : m_bus(std::move(bus)), m_rules(std::move(rules)) {}

  void OnAlarm(const std::string& text) {
    for (const Rule& rule : m_rules) {
      if (text.find(rule.word) == std::string::npos) continue;
      ++m_fired;
      m_bus->Publish(rule.action, text);
    }
  }

  int Fired() const override { return m_fired; }

 private:
  const std::shared_ptr<EventBusService> m_bus;
  const std::vector<Rule> m_rules;
  std::atomic<int> m_fired{0};
};

std::shared_ptr<EventBusService> g_bus;
int g_subscription = 0;

}  // namespace

bool Init() {
  g_bus = board::Find<EventBusService>();
  if (!g_bus || !board::Find<AlarmService>() || !board::Find<VideoService>()) return false;
  const auto linkage = std::make_shared<Linkage>(
      g_bus, std::vector<Rule>{{"smoke", "doors.open"}, {"intrusion", "video.record"}});
  g_subscription = g_bus->Subscribe(
      "alarm", [linkage](const EventBusService::Event& event) { linkage->OnAlarm(event.text); });
  g_bus->Publish("alarm", "smoke in the hall");
  board::Publish<LinkageService>(linkage);
  return linkage->Fired() == 1;
}

bool UnInit() {
  board::Withdraw(LinkageService::kName);
  if (g_bus) g_bus->Unsubscribe(g_subscription);
  g_bus.reset();
  return true;
}
