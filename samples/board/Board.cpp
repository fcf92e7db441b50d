#include "samples/board/Board.h"

#include <map>
#include <mutex>

namespace {

std::mutex g_mutex;

/// By name; guarded by g_mutex. Never destroyed: an Init that ends after the stop has passed its
/// plugin by leaves its service here, and what that one uses is unmapped by then.
std::map<std::string, std::shared_ptr<void>>& Services() {
  static auto* const services = new std::map<std::string, std::shared_ptr<void>>;
  return *services;
}

}  // namespace

void board::PublishService(const std::string& name, std::shared_ptr<void> service) {
  // What the name held before is in `service` when the lock is gone, and freed then: a service may
  // look others up while it goes.
  const std::lock_guard<std::mutex> lock(g_mutex);
  Services()[name].swap(service);
}

std::shared_ptr<void> board::FindService(const std::string& name) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  const auto service = Services().find(name);
  return service == Services().end() ? nullptr : service->second;
}

void board::Withdraw(const std::string& name) {
  std::shared_ptr<void> last;  // freed after the lock: a service may look others up while it goes
  const std::lock_guard<std::mutex> lock(g_mutex);
  const auto service = Services().find(name);
  if (service == Services().end()) return;
  last = std::move(service->second);
  Services().erase(service);
}
