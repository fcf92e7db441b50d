#pragma once

#include <memory>
#include <string>
#include <utility>

#include "sdk/base/log.h"
#include "sdk/os/export.h"

/// Where the sample's plugins find each other: a plugin publishes a service under a name in its
/// Init and withdraws it in its UnInit; those that depend on it look it up. Any thread.
///
/// A service's code lies in its plugin's library. A holder releases it in its own UnInit at the
/// latest: that comes before the publisher's, after which the code is unmapped.
namespace board {

/// The levels of IKPXFormatLog that a plugin uses.
enum LogLevel : int { kProgress = 3, kTolerated = 4, kFailure = 5 };

/// Replaces what was published under the name before.
TEV_EXPORT void PublishService(const std::string& name, std::shared_ptr<void> service);

/// Null when nothing is published under the name.
TEV_EXPORT std::shared_ptr<void> FindService(const std::string& name);

/// After this the name finds nothing. A name that is not published is no error: a plugin's UnInit
/// comes also after an Init that failed before it could publish.
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

/// The same for `plugin`, which fails without the service: null is logged.
template <typename Service>
std::shared_ptr<Service> Need(const char* plugin) {
  auto service = Find<Service>();
  if (!service) {
    IKPXFormatLog(kFailure, plugin, "the service \"%s\" is missing: no plugin has published it",
                  Service::kName);
  }
  return service;
}

}  // namespace board
