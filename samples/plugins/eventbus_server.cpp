// eventbus.server: passes events from those who publish them to those who subscribe to their topic,
// on a thread of its own, in the order in which they were published.

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "eventbus.server";

class EventBus : public EventBusService {
 public:
  explicit EventBus(std::shared_ptr<ClockService> clock)
      : m_clock(std::move(clock)), m_thread([this] { Deliver(); }) {}

  ~EventBus() override {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_ended = true;
    }
    m_wake.notify_one();
    m_thread.join();
    IKPXFormatLog(board::kProgress, kPlugin, "events delivered: %d", m_delivered);
  }

  Subscription Subscribe(const std::string& topic, Handler handler) override {
    return m_listeners.Add([topic, handler = std::move(handler)](const Event& event) {
      if (event.topic == topic) handler(event);
    });
  }

  void Publish(const std::string& topic, const std::string& site,
               const std::string& text) override {
    const int now = m_clock->MinuteOfDay();
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_queue.push_back({topic, site, text, now});
    }
    m_wake.notify_one();
  }

 private:
  /// Returns when the bus has ended and all events are delivered.
  void Deliver() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;; ++m_delivered) {
      m_wake.wait(lock, [this] { return m_ended || !m_queue.empty(); });
      if (m_queue.empty()) return;
      const Event event = std::move(m_queue.front());
      m_queue.pop_front();
      lock.unlock();  // a handler may publish
      m_listeners.Call(event);
      lock.lock();
    }
  }

  const std::shared_ptr<ClockService> m_clock;
  Listeners<Event> m_listeners;
  int m_delivered = 0;  // the thread's own, until it is joined
  std::mutex m_mutex;
  std::condition_variable m_wake;
  bool m_ended = false;       // guarded by m_mutex
  std::deque<Event> m_queue;  // guarded by m_mutex
  std::thread m_thread;
};

}  // namespace

bool Init() {
  const auto clock = board::Need<ClockService>(kPlugin);
  if (!clock) return false;
  board::Publish<EventBusService>(std::make_shared<EventBus>(clock));
  return true;
}

bool UnInit() {
  board::Withdraw(EventBusService::kName);
  return true;
}
