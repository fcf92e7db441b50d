// eventbus.server: topics, subscribers, and their delivery; the last events are kept for a while.

#include <deque>
#include <map>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class EventBus : public EventBusService {
 public:
  explicit EventBus(std::shared_ptr<ClockService> clock) : m_clock(std::move(clock)) {}

  int Subscribe(const std::string& topic, Handler handler) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_subscribers[++m_last] = {topic, std::move(handler)};
    return m_last;
  }

  void Unsubscribe(int subscription) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_subscribers.erase(subscription);
  }

  void Publish(const std::string& topic, const std::string& text) override {
    const Event event{topic, text, m_clock->MinuteOfDay()};
    std::vector<Handler> handlers;  // called without the lock: a handler may publish
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_recent.push_back(event);
      if (m_recent.size() > kKept) m_recent.pop_front();
      for (const auto& subscriber : m_subscribers) {
        if (subscriber.second.first == topic) handlers.push_back(subscriber.second.second);
      }
    }
    for (const Handler& handler : handlers) handler(event);
  }

  std::vector<Event> Recent(const std::string& topic) const override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Event> events;
    for (const Event& event : m_recent) {
      if (event.topic == topic) events.push_back(event);
    }
    return events;
  }

 private:
  static constexpr std::size_t kKept = 100;

  const std::shared_ptr<ClockService> m_clock;
  mutable std::mutex m_mutex;
  int m_last = 0;                                                // guarded by m_mutex
  std::map<int, std::pair<std::string, Handler>> m_subscribers;  // guarded by m_mutex
  std::deque<Event> m_recent;                                    // guarded by m_mutex
};

}  // namespace

bool Init() {
  const auto clock = board::Find<ClockService>();
  if (!clock) return false;
  const auto bus = std::make_shared<EventBus>(clock);
  int heard = 0;
  const int subscription =
      bus->Subscribe("self", [&heard](const EventBusService::Event&) { ++heard; });
  bus->Publish("self", "hello");
  bus->Publish("other", "not for us");
  bus->Unsubscribe(subscription);
  bus->Publish("self", "too late");
  board::Publish<EventBusService>(bus);
  return heard == 1 && bus->Recent("self").size() == 2;
}

bool UnInit() {
  board::Withdraw(EventBusService::kName);
  return true;
}
