#pragma once

#include "src/PluginFrame/FramePluginData.h"
#include "src/model/ProductModel.h"

// The order in which plugins start and stop, as functions of values.

namespace PluginFrame {

/// Gives every server plugin, then every sub platform, its key. A name keeps the key it has.
void AddPluginKeys(PluginKeys& keys, const ProductModel& model);

/// Makes a record for every server plugin and sub platform that has a key, and joins the records of
/// plugins that depend on each other. A dependency on something without a record is ignored.
void AddPluginData(PluginDataMap& data, const PluginKeys& keys, const ProductModel& model);

/// The record of a name, or null.
FramePluginData* FindPluginData(const PluginDataMap& data, const PluginKeys& keys,
                                const std::string& name);

/// May this plugin start? Yes, once all that it depends on is done, well or not.
bool ReadyToStart(const FramePluginData& plugin);

/// May this plugin stop? Yes, once all that depends on it has stopped, well or not.
bool ReadyToStop(const FramePluginData& plugin);

/// Takes the records apart: joined records hold each other, and would never be freed.
void DisconnectPluginData(PluginDataMap& data);

}  // namespace PluginFrame
