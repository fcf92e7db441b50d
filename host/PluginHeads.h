#pragma once

#include <string>
#include <vector>

#include "src/model/ProductModel.h"
#include "workbench/product/LocalNames.h"
#include "workbench/record/RunEvent.h"

/// How names in the local code page become paths on this system.
LocalNames SystemNames();

/// The plugins of a model as a flight record lists them: server plugins and sub platforms in the
/// model's order, with the plugins that their start waits for; then executables and drivers. `bin`:
/// the folder of the sub platforms' libraries, in the local code page, ending in a separator.
std::vector<PluginHead> PluginHeads(const ProductModel& model, const std::string& bin);
