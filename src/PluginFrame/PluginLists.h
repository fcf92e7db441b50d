#pragma once

#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"

// The product's lists of plugins before they are handed over, and the texts made of them: functions
// from values to values.

namespace PluginFrame {

/// Appends each list of an installed addon to the product's list of the same kind.
void AddInstalledAddon(ProductModel& model, const AddonModel& addon);

/// Sorts the product's four plugin lists by ID and keeps, of each ID, the entry with the greatest
/// version text; of equal ones the first. Entries without an ID are removed, and with
/// `distributedOnly` also descriptions that are not distributed.
void TrimPluginLists(ProductModel& model, bool distributedOnly);

/// "ID:version;" of every server plugin, then of every executable plugin.
std::string PluginVersionsText(const ProductModel& model);

/// "ID:version;" of every driver.
std::string DriverVersionsText(const ProductModel& model);

/// The heading of the start-up timing table: sub platforms, server plugins and executable plugins,
/// five to a line.
std::string PluginsToInitText(const ProductModel& model);

}  // namespace PluginFrame
