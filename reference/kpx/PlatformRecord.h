#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sdk/kpx/platform.h"

// Functions of the reference platform library for its host; a site's own library has none of them.

/// One line of the start-up timing table; -1 milliseconds for a line without a time.
struct TimingLine {
  std::string text;
  std::int32_t milliseconds = 0;
};

/// Everything that the frame has passed to the platform since KPX_Init. A member has no value as
/// long as nothing was passed.
struct PlatformRecord {
  std::optional<ProductModel> productModel;
  std::optional<std::vector<AddonModel>> addons;
  std::optional<std::vector<ToolModel>> tools;
  std::optional<std::map<std::string, CPluginInfo>> plugins;
  std::optional<std::map<std::string, bool>> loadState;
  std::vector<std::string> handles;  // names of the plugins that the start callback returned
  std::vector<TimingLine> timing;
  std::optional<bool> callbackResult;  // none until the start callback has returned
};

/// A copy of the current record. Thread-safe.
PlatformRecord SnapshotPlatform();

/// The result of the start callback; none until it has returned. Thread-safe.
std::optional<bool> StartCallbackResult();

/// Sets what is called, on the platform's thread, when StartCallbackResult has got its value;
/// empty: nothing. After the return the former observer is not called any more. It must not set
/// another one; exceptions are ignored. Thread-safe.
void SetStartObserver(std::function<void()> observer);

/// Sets the result of KPX_GetRunningModule, which is 1 by default. Thread-safe.
void SetRunningModule(std::int32_t module);
