#pragma once

#include <string>

#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "src/model/ProductModel.h"

// The records that the frame makes of the product for the libraries around it: functions from
// values to values.

namespace PluginFrame {

/// The record for the local-procedure-call framework. `exeDirectory` ends in a separator.
PlatformInfo MakePlatformInfo(const ProductModel& model, const std::string& exeDirectory);

/// The platform's record of each server and executable plugin, marked as not loaded. Of several
/// plugins with one ID the first counts.
PluginInfoMap MakePluginInfos(const ProductModel& model);

}  // namespace PluginFrame
