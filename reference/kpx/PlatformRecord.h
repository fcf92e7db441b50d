#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "sdk/kpx/platform.h"

// What the open platform library shows of itself to its host.

/// One line of the start-up timing table; -1 milliseconds mark a line that is no timing.
struct TimingLine {
  std::string text;
  std::int32_t milliseconds = 0;
};

/// All that the platform was handed since KPX_Init. What it never was handed has no value.
struct PlatformRecord {
  std::optional<ProductModel> productModel;
  std::optional<std::vector<AddonModel>> addons;
  std::optional<std::vector<ToolModel>> tools;
  std::optional<std::map<std::string, CPluginInfo>> plugins;
  std::optional<std::map<std::string, bool>> loadState;
  std::vector<std::string> handles;  // names of the plugins that the start callback handed over
  std::vector<TimingLine> timing;
  std::optional<bool> callbackResult;  // none until the start callback has returned
};

/// A copy of the record as it is now. Any thread.
PlatformRecord SnapshotPlatform();

/// What the start callback returned; none until it has. Any thread, cheap enough to poll.
std::optional<bool> StartCallbackResult();

/// Sets what KPX_GetRunningModule answers; 1 unless set. Any thread.
void SetRunningModule(std::int32_t module);
