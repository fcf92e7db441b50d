#include "samples/board/Board.h"

#include <map>
#include <mutex>
#include <utility>

namespace {

std::mutex g_mutex;

using Services = std::map<std::string, std::shared_ptr<void>>;

/// By name; guarded by g_mutex. Null when nothing is published. Services still published when this
/// library is unloaded are not freed: their plugin's code is already unmapped (an Init that
/// returned after the stop had counted its plugin published them).
Services* g_services = nullptr;

}  // namespace

void board::PublishService(const std::string& name, std::shared_ptr<void> service) {
  // What the name held before is in `service` when the lock is released, and freed then: a service
  // may look others up in its destructor.
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (!g_services) g_services = new Services;
  (*g_services)[name].swap(service);
}

std::shared_ptr<void> board::FindService(const std::string& name) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (!g_services) return nullptr;
  const auto service = g_services->find(name);
  return service == g_services->end() ? nullptr : service->second;
}

void board::Withdraw(const std::string& name) {
  // Freed after the lock is released: a service may look others up in its destructor.
  std::shared_ptr<void> last;
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (!g_services) return;
  const auto service = g_services->find(name);
  if (service == g_services->end()) return;
  last = std::move(service->second);
  g_services->erase(service);
  if (g_services->empty()) delete std::exchange(g_services, nullptr);
}
