#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace PluginFrame {

/// `FramePluginData::state`.
enum PluginState : std::uint32_t {
  kPending = 0,
  kInitSucceeded = 1,
  kInitFailed = 2,
  kUninitSucceeded = 3,
  kUninitFailed = 4
};

constexpr bool IsStopped(std::uint32_t state) {
  return state == kUninitSucceeded || state == kUninitFailed;
}

/// The state of one plugin, and its place in the dependency graph.
///
/// Shared by the manager's map and by the records of the plugins that it depends on or that depend
/// on it. `name` and the two lists are constant once the graph is built; `state` is guarded by the
/// manager's m_pluginDataMutex.
struct FramePluginData {
  std::string name;
  std::uint32_t state = kPending;
  std::vector<std::shared_ptr<FramePluginData>> depends_on;   // start before this one
  std::vector<std::shared_ptr<FramePluginData>> depended_by;  // stop before this one
};

/// Plugin name to plugin key: a number counted up from 100, "_" and the name.
using PluginKeys = std::map<std::string, std::string>;

/// Plugin key to record. Keys are ordered as texts, so up to 900 plugins are in the product's
/// order.
using PluginDataMap = std::map<std::string, std::shared_ptr<FramePluginData>>;

}  // namespace PluginFrame
