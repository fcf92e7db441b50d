#include "samples/board/Board.h"

#include <map>
#include <mutex>

namespace {

std::mutex g_mutex;
std::map<std::string, std::shared_ptr<void>> g_services;  // guarded by g_mutex

}  // namespace

void board::PublishService(const std::string& name, std::shared_ptr<void> service) {
  // What the name held before is in `service` when the lock is gone, and freed then: a service may
  // look others up while it goes.
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_services[name].swap(service);
}

std::shared_ptr<void> board::FindService(const std::string& name) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  const auto service = g_services.find(name);
  return service == g_services.end() ? nullptr : service->second;
}

void board::Withdraw(const std::string& name) {
  std::shared_ptr<void> last;  // freed after the lock: a service may look others up while it goes
  const std::lock_guard<std::mutex> lock(g_mutex);
  const auto service = g_services.find(name);
  if (service == g_services.end()) return;
  last = std::move(service->second);
  g_services.erase(service);
}
