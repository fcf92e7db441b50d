#pragma once

#include <string>

#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "src/model/ProductModel.h"

// What the frame tells the libraries around it of the product, as functions of values.

namespace PluginFrame {

/// What the local-procedure-call framework is told. `exeDirectory` ends in a separator.
PlatformInfo MakePlatformInfo(const ProductModel& model, const std::string& exeDirectory);

/// One info for each server and executable plugin, none of them loaded yet; of one ID, the first.
PluginInfoMap MakePluginInfos(const ProductModel& model);

}  // namespace PluginFrame
