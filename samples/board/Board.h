#pragma once

#include <memory>
#include <string>

#include "sdk/os/export.h"

/// Where the sample's plugins find each other: a plugin publishes a service under a name in its
/// Init and withdraws it in its UnInit; those that depend on it look it up. Any thread.
namespace board {

TEV_EXPORT void PublishService(const std::string& name, std::shared_ptr<void> service);
TEV_EXPORT std::shared_ptr<void> FindService(const std::string& name);

/// After this the name finds nothing; whoever holds the service still may use it.
TEV_EXPORT void Withdraw(const std::string& name);

/// Publishes `service` under its type's own name, `Service::kName`.
template <typename Service>
void Publish(std::shared_ptr<Service> service) {
  PublishService(Service::kName, std::move(service));
}

/// The published service of this type, or null.
template <typename Service>
std::shared_ptr<Service> Find() {
  return std::static_pointer_cast<Service>(FindService(Service::kName));
}

}  // namespace board
