#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>

/// Keeps a handler registered until it is released. It holds a plain pointer to its service:
/// release it in UnInit, while the plugin that made it is still loaded.
using Subscription = std::shared_ptr<void>;

/// The handlers that a service calls. Any thread.
///
/// After a subscription is released its handler is not running and is not called again. Therefore
/// one handler runs at a time, and a handler must neither add nor release one.
template <typename... Arguments>
class Listeners {
 public:
  using Handler = std::function<void(const Arguments&... arguments)>;

  Subscription Add(Handler handler) {
    auto place = m_handlers.end();
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      place = m_handlers.insert(place, std::move(handler));
    }
    return Subscription(this, [this, place](void*) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_handlers.erase(place);
    });
  }

  void Call(const Arguments&... arguments) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Handler& handler : m_handlers) handler(arguments...);
  }

 private:
  mutable std::mutex m_mutex;     // held while handlers run
  std::list<Handler> m_handlers;  // guarded by m_mutex
};
