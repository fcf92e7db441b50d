#pragma once

#include <atomic>
#include <boost/thread/mutex.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "sdk/kpx/platform.h"
#include "src/PluginFrame/FramePluginData.h"
#include "src/PluginFrame/Plugin.h"
#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"

namespace PluginFrame {

/// Reads the product's model, and loads, starts, stops and frees its plugins' libraries. A plugin
/// starts after those that it depends on and stops before them.
///
/// One per process, made by Instance and never destroyed. Init and Uninit run on the host's thread,
/// Start on the platform's, and one task per plugin on pool threads. Failures are return values or,
/// of a single plugin, log lines. The public functions throw what the libraries around the frame
/// throw, and std::bad_alloc.
///
/// A plugin whose Init does not return, and plugins that depend on each other in a cycle, keep
/// Start waiting until Uninit is called.
///
/// Lock order: m_lifecycleMutex, m_countMutex, m_pluginDataMutex, m_pluginKeysMutex; and
/// m_countMutex before m_loadedPluginsMutex. A thread that runs a plugin's code holds none of
/// them.
class CPluginManager {
 public:
  static CPluginManager& Instance();

  CPluginManager() = default;
  ~CPluginManager();
  CPluginManager(const CPluginManager&) = delete;
  CPluginManager& operator=(const CPluginManager&) = delete;

  /// Reads the product, hands it to the platform and prepares the start. False when the frame
  /// cannot go on; what was read and built until then stays. Meant to be called once.
  bool Init();

  /// Starts all plugins, waits for them and adds the handles of the loaded ones to `out`. False
  /// when the thread pool is not granted. Does nothing unless Init has succeeded.
  bool Start(StartedPluginMap* out);

  /// Ends a Start that still waits, then stops all plugins and waits for them.
  void Uninit();

 private:
  /// By plugin name. A task shares the plugin that it runs, and may keep it after the entry is
  /// gone.
  using LoadedPlugins = std::map<std::string, std::shared_ptr<CPlugin>>;

  /// What differs between starting and stopping.
  struct Phase {
    bool initialised;  // m_initialised while the phase goes on
    bool (*ready)(const FramePluginData& plugin);
    void (CPluginManager::*work)(const std::string& name);     // the task of one plugin
    void (CPluginManager::*refused)(const std::string& name);  // counts one without a task
  };

  enum class LoadResult { kStarted, kInitFailed, kLoadFailed, kNullEntry, kThrew, kSkipped };

  /// What became of a plugin that was to start.
  struct LoadOutcome {
    LoadResult result = LoadResult::kSkipped;
    LoadedPlugins loaded = {};     // the plugin's entry, when its library is loaded
    const char* reason = nullptr;  // why it threw or was skipped
  };

  /// What became of a plugin that was to stop.
  enum class UnloadResult { kStopped, kRefused, kNotLoaded, kSkipped };

  /// Increments m_finishedCount and holds m_countMutex for the scope, so that log lines keep the
  /// order of the counts.
  class CountedPlugin;

  /// The count of a phase; see its definition.
  class PhaseCount;

  // The steps of Init.
  bool ReadModels();
  void MergeInstalledAddons();
  bool HandOverProductModel();
  void LogVersions() const;
  void BuildGraph();
  bool StartLpcFrame();
  void RegisterPlugins() const;

  // The steps of Start and Uninit.
  void RunPhase(const Phase& phase);
  std::vector<std::string> PostReadyPlugins(const Phase& phase, std::set<std::string>& posted);
  bool AllFinished();
  void ReportStarted(StartedPluginMap* out);
  bool StopLpcFrame();

  // The start of one plugin, on a pool thread.
  void SinglePluginLoad(const std::string& name);
  LoadOutcome LoadAndInit(const std::string& name);
  void FinishLoad(const std::string& name, LoadOutcome outcome);
  static void LogLoadEnd(const char* plugin, const LoadOutcome& outcome, std::int32_t count);

  // The stop of one plugin, on a pool thread.
  void SinglePluginUnload(const std::string& name);
  UnloadResult StopAndFree(const std::string& name);
  void FinishUnload(const std::string& name, UnloadResult result);
  static void LogUnloadEnd(const char* plugin, UnloadResult result, std::int32_t count);

  // Count a plugin whose task the pool refused, on the thread of Start or Uninit.
  void CountRefusedLoad(const std::string& name);
  void CountRefusedUnload(const std::string& name);

  std::string LibraryPath(const std::string& name) const;

  // Access to guarded members. Each takes their locks.
  std::int32_t PluginCount();
  void SetState(const std::string& name, PluginState state);
  bool HasStopped(const std::string& name);
  std::shared_ptr<CPlugin> FindOrMakePlugin(const std::string& name);
  void AddLoaded(LoadedPlugins loaded);
  void ForgetLoaded(const std::string& name);
  LoadedPlugins::node_type TakeLoaded(const std::string& name);

  // Written by Init on the host's thread before any task exists, constant afterwards.
  ProductModel m_productModel;
  std::vector<AddonModel> m_addonsModel;
  std::vector<ToolModel> m_toolsModel;

  // Held for the whole of Start and of Uninit.
  boost::mutex m_lifecycleMutex;

  boost::shared_mutex m_loadedPluginsMutex;
  LoadedPlugins m_loadedPlugins;  // guarded by m_loadedPluginsMutex

  boost::shared_mutex m_pluginDataMutex;
  PluginDataMap m_pluginData;  // guarded, with the states of the records, by m_pluginDataMutex

  boost::shared_mutex m_pluginKeysMutex;
  PluginKeys m_pluginKeys;  // guarded by m_pluginKeysMutex

  boost::mutex m_countMutex;
  std::int32_t m_finishedCount = 0;  // plugins done with the phase; guarded by m_countMutex

  // Set by Init. Uninit clears it before it takes a lock: a Start on another thread then ends.
  std::atomic<bool> m_initialised{false};
};

}  // namespace PluginFrame
