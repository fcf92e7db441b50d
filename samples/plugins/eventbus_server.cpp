// eventbus.server: topics, subscribers, and their delivery.

#include <map>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class EventBus : public EventBusService {
 public:
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
    std::vector<Handler> handlers;  // called without the lock: a handler may publish
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      for (const auto& subscriber : m_subscribers) {
        if (subscriber.second.first == topic) handlers.push_back(subscriber.second.second);
      }
    }
    for (const Handler& handler : handlers) handler(text);
  }

 private:
  std::mutex m_mutex;
  int m_last = 0;                                                // guarded by m_mutex
  std::map<int, std::pair<std::string, Handler>> m_subscribers;  // guarded by m_mutex
};

}  // namespace

bool Init() {
  const auto bus = std::make_shared<EventBus>();
  int heard = 0;
  const int subscription = bus->Subscribe("self", [&heard](const std::string&) { ++heard; });
  bus->Publish("self", "hello");
  bus->Publish("other", "not for us");
  bus->Unsubscribe(subscription);
  bus->Publish("self", "too late");
  board::Publish<EventBusService>(bus);
  return heard == 1;
}

bool UnInit() {
  board::Withdraw(EventBusService::kName);
  return true;
}
