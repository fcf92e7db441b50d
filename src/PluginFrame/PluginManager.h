#pragma once

#include <atomic>
#include <boost/thread/mutex.hpp>
#include <boost/thread/shared_mutex.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sdk/kpx/platform.h"
#include "src/PluginFrame/FramePluginData.h"
#include "src/PluginFrame/Plugin.h"
#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"

namespace PluginFrame {

/// Owner of the product's model and of its plugins' libraries: brings the plugins up in the order
/// of their dependencies, and down in the reverse order.
///
/// One for the process, through Instance, which lives until the process ends. Init and Uninit run
/// on the host's thread, Start on the platform's, and one task per plugin on pool threads. Failures
/// are results; of exceptions only those of an exhausted memory leave a member.
///
/// A plugin that never returns, and plugins that depend on each other in a circle, keep Start
/// waiting until Uninit is called.
///
/// Lock order: m_lifecycleMutex, m_countMutex, m_pluginDataMutex, m_pluginKeysMutex, and
/// m_countMutex before m_loadedPluginsMutex. No lock but m_lifecycleMutex is held while a plugin's
/// code runs.
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

  /// Starts all plugins and waits for them, adding the handles of the loaded ones to `out`. False
  /// when no threads could be had. Without a successful Init there is nothing to do.
  bool Start(StartedPluginMap* out);

  /// Ends a Start that still waits, then stops all plugins and waits for them.
  void Uninit();

 private:
  /// By plugin name. Shared with the task that runs the plugin, which may outlast the entry.
  using LoadedPlugins = std::map<std::string, std::shared_ptr<CPlugin>>;

  /// What differs between starting and stopping.
  struct Phase {
    bool initialised;  // m_initialised while the phase goes on
    bool (*ready)(const FramePluginData& plugin);
    void (CPluginManager::*work)(const std::string& name);
    void (CPluginManager::*refused)(const std::string& name, const char* reason);
  };

  /// One plugin counted as done, and the count held until the line that tells it is written.
  class CountedPlugin;

  /// The count of one phase.
  class PhaseCount;

  // The steps of Init.
  bool ReadModels();
  void MergeInstalledAddons();
  bool HandOverProductModel();
  void LogVersions() const;
  void BuildGraph();
  bool StartLpcFrame();
  void RegisterPlugins() const;

  // The work of both phases.
  void RunPhase(const Phase& phase);
  bool AllFinished();
  std::int32_t PluginCount();
  void SetState(const std::string& name, PluginState state);
  bool HasStopped(const std::string& name);

  // A plugin's turns, on a pool thread; each counts the plugin once.
  void SinglePluginLoad(const std::string& name);
  void LoadAndInit(const std::string& name);
  void GiveUpStart(const std::string& name, const char* reason);
  void SinglePluginUnload(const std::string& name);

  // Count a plugin whose turn is left out, on whichever thread.
  void CountNotLoaded(const std::string& name, const char* reason);
  void CountNotUnloaded(const std::string& name, const char* reason);

  std::string LibraryPath(const std::string& name) const;
  void EnterLoaded(LoadedPlugins& loaded);
  void ForgetLoaded(const std::string& name);
  void ReportStarted(StartedPluginMap* out);

  // Written by Init on the host's thread before any task exists, constant afterwards.
  ProductModel m_productModel;
  std::vector<AddonModel> m_addonsModel;
  std::vector<ToolModel> m_toolsModel;

  // Held for the whole of Start and of Uninit.
  boost::mutex m_lifecycleMutex;

  boost::shared_mutex m_loadedPluginsMutex;
  LoadedPlugins m_loadedPlugins;  // guarded by m_loadedPluginsMutex

  boost::shared_mutex m_pluginDataMutex;
  PluginDataMap m_pluginData;  // guarded, with its records' states, by m_pluginDataMutex

  boost::shared_mutex m_pluginKeysMutex;
  PluginKeys m_pluginKeys;  // guarded by m_pluginKeysMutex

  boost::mutex m_countMutex;
  std::int32_t m_finishedCount = 0;  // plugins done with the phase; guarded by m_countMutex

  // Set by Init, cleared by Uninit, which so calls off a Start on another thread.
  std::atomic<bool> m_initialised{false};
};

}  // namespace PluginFrame
