#pragma once

#include <string>

#include "src/PluginFrame/FramePluginData.h"
#include "src/model/ProductModel.h"

// The order in which plugins start and stop: functions from values to values.

namespace PluginFrame {

/// Gives every server plugin, then every sub platform, its key. A name keeps the key it has.
void AddPluginKeys(PluginKeys& keys, const ProductModel& model);

/// Makes a record for every server plugin and sub platform that has a key, and links the record of
/// each plugin with those of its dependencies. A dependency without a record is ignored.
void AddPluginData(PluginDataMap& data, const PluginKeys& keys, const ProductModel& model);

/// The record of a name, or null.
FramePluginData* FindPluginData(const PluginDataMap& data, const PluginKeys& keys,
                                const std::string& name);

/// Whether the start of every plugin that this one depends on has ended, with success or without.
bool ReadyToStart(const FramePluginData& plugin);

/// Whether every plugin that depends on this one has stopped, with success or without.
bool ReadyToStop(const FramePluginData& plugin);

/// Removes the links between the records: they share each other, so they would never be freed.
void DisconnectPluginData(PluginDataMap& data);

}  // namespace PluginFrame
