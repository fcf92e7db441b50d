#include "src/PluginFrame/PluginManager.h"

#include <algorithm>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/synchronized_value.hpp>
#include <exception>
#include <mutex>
#include <new>
#include <set>
#include <utility>

#include "sdk/base/path.h"
#include "sdk/base/thread.h"
#include "sdk/lpc/lpc.h"
#include "sdk/os/os.h"
#include "sdk/xrt/runtime.h"
#include "src/PluginFrame/PlatformHandover.h"
#include "src/PluginFrame/PluginFrameTask.h"
#include "src/PluginFrame/PluginGraph.h"
#include "src/PluginFrame/PluginLists.h"
#include "src/PluginFrame/ThreadPoolLease.h"
#include "src/PluginFrame/TimingTable.h"
#include "src/model/PluginDescription.h"
#include "src/private/FrameLog.h"
#include "src/private/ProductModelReaderImpl.h"

namespace PluginFrame {

namespace {

using Lock = boost::unique_lock<boost::mutex>;
using WriteLock = boost::unique_lock<boost::shared_mutex>;
using ReadLock = boost::shared_lock<boost::shared_mutex>;

constexpr std::uint32_t kPollMilliseconds = 200;
constexpr std::int32_t kDistributedModule = 2;
constexpr std::int32_t kNoTiming = -1;
constexpr char kRefusedByPool[] = "the thread pool refused its task";

// The functions that log lines name. Private steps log under the function that they are a part of.
constexpr char kInit[] = "PluginFrame::CPluginManager::Init";
constexpr char kStart[] = "PluginFrame::CPluginManager::Start";
constexpr char kUninit[] = "PluginFrame::CPluginManager::Uninit";
constexpr char kLoad[] = "PluginFrame::CPluginManager::SinglePluginLoad";
constexpr char kUnload[] = "PluginFrame::CPluginManager::SinglePluginUnload";

// Logs under one of these functions; the texts of each begin with its label.
#define LOG_AS(function, module, level, ...)      \
  do {                                            \
    const char* const kLogFunction = function;    \
    FRAME_LOG_MODULE(module, level, __VA_ARGS__); \
  } while (false)
#define LOG_INIT(level, ...) LOG_AS(kInit, kLogModule, level, "[PluginManager Init]" __VA_ARGS__)
#define LOG_START(level, ...) LOG_AS(kStart, kLogModule, level, "[PluginManager start]" __VA_ARGS__)
#define LOG_UNINIT_MODULE(module, level, ...) \
  LOG_AS(kUninit, module, level, "[PluginManager Uninit]" __VA_ARGS__)
#define LOG_UNINIT(level, ...) LOG_UNINIT_MODULE(kLogModule, level, __VA_ARGS__)
#define LOG_LOAD(level, ...) LOG_AS(kLoad, kLogModule, level, "[Plugin Load]" __VA_ARGS__)
#define LOG_UNLOAD(level, ...) LOG_AS(kUnload, kLogModule, level, "[Plugin Unload]" __VA_ARGS__)

/// Adds a row to the timing table. A row that is lost is logged under `function`.
template <typename MakeText>
void AddTimingLine(const char* function, std::int32_t milliseconds, MakeText makeText) {
  if (!AddTimingRow(makeText, milliseconds)) {
    LOG_AS(function, kLogModule, kTolerated, "%s", kRowIsLost);
  }
}

/// The plugins that refused to stop. Their code may still run, so the list is never destroyed and
/// their libraries stay mapped until the process ends. It lies in the frame's own memory, so that a
/// host that loads the frame again and again does not collect lists.
auto& RefusedPlugins() {
  using Plugins = boost::synchronized_value<std::multimap<std::string, std::shared_ptr<CPlugin>>>;
  alignas(Plugins) static unsigned char memory[sizeof(Plugins)];
  static auto& plugins = *new (memory) Plugins;
  return plugins;
}

}  // namespace

/// Sets m_finishedCount to 0 for the next phase: in Finish, or when an exception ends this phase.
class CPluginManager::PhaseCount {
 public:
  explicit PhaseCount(CPluginManager& manager) : m_manager(&manager) {}
  ~PhaseCount() {
    try {
      if (m_manager != nullptr) Finish();
    } catch (...) {
      return;  // the lock has failed while another exception unwinds: that one is reported
    }
  }
  PhaseCount(const PhaseCount&) = delete;
  PhaseCount& operator=(const PhaseCount&) = delete;

  /// Returns m_countMutex, locked.
  Lock Finish() {
    CPluginManager& manager = *std::exchange(m_manager, nullptr);
    Lock lock(manager.m_countMutex);
    manager.m_finishedCount = 0;
    return lock;
  }

  /// Leaves the count as it is.
  void Keep() { m_manager = nullptr; }

 private:
  CPluginManager* m_manager;
};

class CPluginManager::CountedPlugin {
 public:
  explicit CountedPlugin(CPluginManager& manager)
      : m_lock(manager.m_countMutex), m_count(++manager.m_finishedCount) {}

  std::int32_t Count() const { return m_count; }

 private:
  const Lock m_lock;
  const std::int32_t m_count;
};

CPluginManager& CPluginManager::Instance() {
  static std::atomic<CPluginManager*> instance{nullptr};
  static std::mutex mutex;
  CPluginManager* manager = instance.load(std::memory_order_acquire);
  if (manager == nullptr) {
    const std::lock_guard<std::mutex> lock(mutex);
    manager = instance.load(std::memory_order_relaxed);
    if (manager == nullptr) {
      manager = new CPluginManager;  // never deleted: its tasks may run until the process ends
      instance.store(manager, std::memory_order_release);
    }
  }
  return *manager;
}

CPluginManager::~CPluginManager() {
  m_loadedPlugins.clear();
  DisconnectPluginData(m_pluginData);
}

bool CPluginManager::Init() {
  LOG_INIT(kProgress, "----PluginManager Init start----");
  if (!ReadModels()) return false;
  MergeInstalledAddons();
  TrimPluginLists(m_productModel, KPX_GetRunningModule() == kDistributedModule);
  if (!HandOverProductModel()) return false;
  LogVersions();
  BuildGraph();
  if (!StartLpcFrame()) return false;
  RegisterPlugins();
  m_initialised = true;
  LOG_INIT(kProgress, "----PluginManager Init success----");
  return true;
}

bool CPluginManager::ReadModels() {
  const TevModelParse::CProductXmlReader reader;
  if (!reader.ReadServerModel(m_productModel)) {
    LOG_INIT(kFatal, "----ReadServerModel failed.Get product model param failed----");
    return false;
  }
  if (!reader.ReadServerAddonsModel(m_addonsModel)) {
    LOG_INIT(kTolerated,
             "----ReadServerAddonsModel failed.Get product addons model param failed----");
  }
  if (!reader.ReadServerToolsModel(m_toolsModel)) {
    LOG_INIT(kTolerated,
             "----ReadServerToolsModel failed.Get product tools model param failed----");
  }
  return true;
}

void CPluginManager::MergeInstalledAddons() {
  KPX_SetAddonAndToolModel(m_addonsModel, m_toolsModel);
  LOG_INIT(kProgress, "Set Addons and Tools Model to platform.");
  std::vector<AddonModel> installed;
  KPX_GetInstalledAddonModel(installed);
  LOG_INIT(kProgress, "Get signed & compatibled verify and installed addons size [%d].",
           static_cast<int>(installed.size()));
  for (const AddonModel& addon : installed) {
    LOG_INIT(kProgress, "Installed addon name [%s].", addon.ID.c_str());
    AddInstalledAddon(m_productModel, addon);
  }
}

bool CPluginManager::HandOverProductModel() {
  if (KPX_SetProductModel(m_productModel) == 0) {
    LOG_INIT(kFatal,
             "----KPX_SetProductModel failed.Set product model param to platform failed----");
    return false;
  }
  LOG_INIT(kProgress, "Set product model param to platform success.");
  return true;
}

void CPluginManager::LogVersions() const {
  LOG_INIT(kProgress, "Plugins' version: [%s]", PluginVersionsText(m_productModel).c_str());
  LOG_INIT(kProgress, "Drivers' version: [%s]", DriverVersionsText(m_productModel).c_str());
}

void CPluginManager::BuildGraph() {
  {
    const WriteLock keys(m_pluginKeysMutex);
    AddPluginKeys(m_pluginKeys, m_productModel);
  }
  const WriteLock data(m_pluginDataMutex);
  const ReadLock keys(m_pluginKeysMutex);
  AddPluginData(m_pluginData, m_pluginKeys, m_productModel);
}

bool CPluginManager::StartLpcFrame() {
  const PlatformInfo info = MakePlatformInfo(m_productModel, GetCurExeDir());
  LOG_INIT(kProgress, "Switch Product Model to LPC frame info.");
  const std::int32_t error = TevLPCFrameInit("lpc_server_framework", info);
  if (error != 0) {
    LOG_INIT(kFatal, "----TevLPCFrameInit failed, errorcode[%d]----", error);
    return false;
  }
  LOG_INIT(kProgress, "TevLPCFrameInit success.");
  return true;
}

void CPluginManager::RegisterPlugins() const {
  AddPluginsInfo(MakePluginInfos(m_productModel));
  LOG_INIT(kProgress, "Set plugin info to platform success.");
}

bool CPluginManager::Start(StartedPluginMap* out) {
  if (!m_initialised) return true;
  const Lock lifecycle(m_lifecycleMutex);
  LOG_START(kProgress, "----PluginManager start----");
  ThreadPoolLease pool(PluginCount());
  if (!pool.Granted()) {
    LOG_START(kFatal, "----PluginManager start failed.Get thread for %s failed.----", kThreadPool);
    return false;
  }
  AddTimingLine(kStart, kNoTiming, [this] { return PluginsToInitText(m_productModel); });
  LOG_START(kProgress, "Plugins init start...");
  const ULONGLONG begin = GetTickCount64();
  PhaseCount phase(*this);
  RunPhase(
      {true, &ReadyToStart, &CPluginManager::SinglePluginLoad, &CPluginManager::CountRefusedLoad});
  pool.Release();
  LOG_START(kProgress, "Plugins init end. Total cost time [%d]ms.",
            Elapsed(begin, GetTickCount64()));

  // Held until Start returns, so that a plugin whose Init ends from here on is counted in the
  // stop's phase.
  const Lock count = phase.Finish();
  ReportStarted(out);
  TevLPCFrameNotifyStartPlugins("");
  LOG_START(kProgress, "Notify plugin start by LPC.");
  LOG_START(kProgress, "----PluginManager Start success----");
  return true;
}

void CPluginManager::Uninit() {
  LOG_UNINIT(kProgress, "----CPluginManager::Uninit start.----");
  m_initialised = false;
  const Lock lifecycle(m_lifecycleMutex);
  if (!StopLpcFrame()) return;
  LOG_UNINIT(kProgress, "Get threads for uninit plugins start.");
  const std::int32_t plugins = PluginCount();
  ThreadPoolLease pool(plugins);
  if (!pool.Granted()) {
    LOG_UNINIT(kFailure, "Get threads for uninit plugins end, failed.");
    return;
  }
  LOG_UNINIT(kProgress, "Get threads for uninit plugins end, success(threads num = %d). ", plugins);
  const ULONGLONG begin = GetTickCount64();
  LOG_UNINIT(kProgress, "Uninit all plugins start.");
  RefusedPlugins();  // makes the list, which may throw, before any UnInit has run
  PhaseCount phase(*this);
  RunPhase({false, &ReadyToStop, &CPluginManager::SinglePluginUnload,
            &CPluginManager::CountRefusedUnload});
  pool.Release();
  phase.Keep();
  LOG_UNINIT(kProgress, "]Uninit all plugins end.cost time [%d]ms.",
             Elapsed(begin, GetTickCount64()));
  LOG_UNINIT(kProgress, "CPluginManager::Uninit end.");
}

bool CPluginManager::StopLpcFrame() {
  LOG_UNINIT(kProgress, "Uninit lpc frame start.");
  if (TevLPCFrameUnInit() != 0) {
    LOG_UNINIT_MODULE("platform.LPCIntegrate", kTolerated, "Uninit lpc frame end, failed.");
    return false;
  }
  LOG_UNINIT(kProgress, "Uninit lpc frame end, success.");
  return true;
}

void CPluginManager::RunPhase(const Phase& phase) {
  std::set<std::string> posted;
  while (m_initialised == phase.initialised && !AllFinished()) {
    for (const std::string& name : PostReadyPlugins(phase, posted)) (this->*phase.refused)(name);
    XRT_Sleep(kPollMilliseconds);
  }
}

/// Posts the tasks of the plugins that are ready and not yet in `posted`, and adds their keys to
/// it. Returns the names of those whose task the pool refused.
std::vector<std::string> CPluginManager::PostReadyPlugins(const Phase& phase,
                                                          std::set<std::string>& posted) {
  std::vector<std::string> refused;
  const ReadLock lock(m_pluginDataMutex);
  for (const auto& [key, plugin] : m_pluginData) {
    if (posted.count(key) != 0 || !phase.ready(*plugin)) continue;
    posted.insert(key);
    auto work = [this, work = phase.work](const std::string& name) { (this->*work)(name); };
    const bool accepted = CThreadManager::Instance().PostTask(
        std::make_shared<CPluginFrameTask>(plugin->name, std::move(work)), false);
    if (!accepted) refused.push_back(plugin->name);
  }
  return refused;
}

bool CPluginManager::AllFinished() {
  // More than all when a start was ended early: a plugin whose Init ends during the stop is counted
  // for its start and for its stop.
  const Lock lock(m_countMutex);
  return m_finishedCount >= PluginCount();
}

std::int32_t CPluginManager::PluginCount() {
  const ReadLock lock(m_pluginDataMutex);
  return static_cast<std::int32_t>(m_pluginData.size());
}

void CPluginManager::SetState(const std::string& name, PluginState state) {
  const WriteLock data(m_pluginDataMutex);
  const ReadLock keys(m_pluginKeysMutex);
  FramePluginData* plugin = FindPluginData(m_pluginData, m_pluginKeys, name);
  if (plugin == nullptr) return;
  // An Init may end after its plugin was stopped. The record stays stopped, or the stop would wait
  // for ever before it stops the plugins that this one depends on.
  if (IsStopped(plugin->state) && !IsStopped(state)) return;
  plugin->state = state;
}

bool CPluginManager::HasStopped(const std::string& name) {
  const ReadLock data(m_pluginDataMutex);
  const ReadLock keys(m_pluginKeysMutex);
  const FramePluginData* plugin = FindPluginData(m_pluginData, m_pluginKeys, name);
  return plugin != nullptr && IsStopped(plugin->state);
}

void CPluginManager::SinglePluginLoad(const std::string& name) {
  LOG_LOAD(kProgress, "Plugin [%s] SinglePluginLoad Begin.", name.c_str());
  // A task that a start left in the pool's queue when it was stopped: what the plugin depends on
  // may be unmapped by now.
  if (HasStopped(name)) return FinishLoad(name, {LoadResult::kSkipped, {}, "the stop came first"});
  try {
    FinishLoad(name, LoadAndInit(name));
  } catch (const std::exception& error) {
    FinishLoad(name, {LoadResult::kThrew, {}, error.what()});
  } catch (...) {
    FinishLoad(name, {LoadResult::kThrew, {}, "something that is no exception object"});
  }
}

/// Throws nothing once Init has been called: the library of a plugin that runs must not be lost.
CPluginManager::LoadOutcome CPluginManager::LoadAndInit(const std::string& name) {
  const std::shared_ptr<CPlugin> plugin = FindOrMakePlugin(name);
  if (!plugin) return {LoadResult::kNullEntry};
  if (!plugin->Load(LibraryPath(name))) {
    AddTimingLine(kLoad, kNoTiming, [&] { return "[" + name + "] Load Failed"; });
    ForgetLoaded(name);
    return {LoadResult::kLoadFailed};
  }
  LoadOutcome outcome{LoadResult::kInitFailed, {{name, plugin}}};  // allocates, so before Init
  const ULONGLONG begin = GetTickCount64();
  LOG_LOAD(kProgress, "Plugin Init begin.[%s]", name.c_str());
  if (plugin->Init()) outcome.result = LoadResult::kStarted;
  const std::int32_t cost = Elapsed(begin, GetTickCount64());
  if (outcome.result == LoadResult::kStarted) {
    AddTimingLine(kLoad, cost, [&] { return "[" + name + "] Init OK"; });
    LOG_LOAD(kProgress, "Plugin Init end. [%s] cost time [%d]ms", name.c_str(), cost);
  } else {
    AddTimingLine(kLoad, cost, [&] { return "[" + name + "] Init Failed"; });
    LOG_LOAD(kFailure, "Plugin Init end (failed). [%s] cost time [%d]ms.", name.c_str(), cost);
  }
  return outcome;
}

/// Every load ends here, and is counted once.
void CPluginManager::FinishLoad(const std::string& name, LoadOutcome outcome) {
  SetState(name, outcome.result == LoadResult::kStarted ? kInitSucceeded : kInitFailed);
  // Releases the task's share of the plugin before the count: from then on the stop may free it.
  if (!outcome.loaded.empty()) AddLoaded(std::move(outcome.loaded));
  const CountedPlugin counted(*this);
  LogLoadEnd(name.c_str(), outcome, counted.Count());
}

void CPluginManager::LogLoadEnd(const char* plugin, const LoadOutcome& outcome,
                                std::int32_t count) {
  switch (outcome.result) {
    case LoadResult::kStarted:
    case LoadResult::kInitFailed:
      LOG_LOAD(outcome.result == LoadResult::kStarted ? kProgress : kFailure,
               "Plugin [%s] SinglePluginLoad End. count[%d].", plugin, count);
      break;
    case LoadResult::kLoadFailed:
      LOG_LOAD(kFailure, "Plugin %s load failed, InitFailed, count[%d].", plugin, count);
      break;
    case LoadResult::kNullEntry:
      LOG_LOAD(kFailure, "Plugin %s is null, InitFailed, count[%d].", plugin, count);
      break;
    case LoadResult::kThrew:
      LOG_LOAD(kFailure, "Plugin [%s] SinglePluginLoad End (%s). count[%d].", plugin,
               outcome.reason, count);
      break;
    case LoadResult::kSkipped:
      LOG_LOAD(kFailure, "Plugin %s not loaded (%s), count[%d].", plugin, outcome.reason, count);
      break;
  }
}

void CPluginManager::CountRefusedLoad(const std::string& name) {
  FinishLoad(name, {LoadResult::kSkipped, {}, kRefusedByPool});
}

void CPluginManager::SinglePluginUnload(const std::string& name) {
  LOG_UNLOAD(kProgress, "Plugin [%s] SinglePluginUnload Begin.", name.c_str());
  if (name.empty()) {
    LOG_UNLOAD(kFailure, "Plugin %s instance not found.", name.c_str());
    return;
  }
  FinishUnload(name, StopAndFree(name));
}

CPluginManager::UnloadResult CPluginManager::StopAndFree(const std::string& name) {
  LoadedPlugins::node_type entry = TakeLoaded(name);
  if (!entry || !entry.mapped()) return UnloadResult::kNotLoaded;
  const ULONGLONG begin = GetTickCount64();
  LOG_UNLOAD(kProgress, "Plugin UnInit begin.[%s]", name.c_str());
  const bool stopped = entry.mapped()->UnInit();
  LOG_UNLOAD(kProgress, "Plugin UnInit end. [%s] cost time [%d] ms.", name.c_str(),
             Elapsed(begin, GetTickCount64()));
  if (stopped) return UnloadResult::kStopped;  // destroying the entry frees the library
  RefusedPlugins()->insert(std::move(entry));
  return UnloadResult::kRefused;
}

/// Counts the plugin. The library has been freed before: once the record says stopped, those that
/// this library uses may be freed.
void CPluginManager::FinishUnload(const std::string& name, UnloadResult result) {
  const bool gone = result == UnloadResult::kStopped || result == UnloadResult::kNotLoaded;
  SetState(name, gone ? kUninitSucceeded : kUninitFailed);
  const CountedPlugin counted(*this);
  LogUnloadEnd(name.c_str(), result, counted.Count());
}

void CPluginManager::LogUnloadEnd(const char* plugin, UnloadResult result, std::int32_t count) {
  switch (result) {
    case UnloadResult::kStopped:
    case UnloadResult::kRefused:
      LOG_UNLOAD(result == UnloadResult::kStopped ? kProgress : kFailure,
                 "Plugin [%s] SinglePluginUnload End. count[%d].", plugin, count);
      break;
    case UnloadResult::kNotLoaded:
      LOG_UNLOAD(kFailure, "Plugin %s is null, UninitSuccess, count[%d].", plugin, count);
      break;
    case UnloadResult::kSkipped:
      LOG_UNLOAD(kFailure, "Plugin %s not unloaded (%s), count[%d].", plugin, kRefusedByPool,
                 count);
      break;
  }
}

void CPluginManager::CountRefusedUnload(const std::string& name) {
  if (name.empty()) return;  // its task would not have counted it either
  FinishUnload(name, UnloadResult::kSkipped);
}

/// The path of a plugin's library without its extension.
std::string CPluginManager::LibraryPath(const std::string& name) const {
  const auto& plugins = m_productModel.ServerPluginDescriptions;
  const auto plugin = std::find_if(plugins.begin(), plugins.end(),
                                   [&](const PluginDescription& p) { return p.ID == name; });
  return (plugin != plugins.end() ? plugin->Path : GetCurExeDir()) + name;
}

/// The plugin that an earlier start has loaded, or a new one.
std::shared_ptr<CPlugin> CPluginManager::FindOrMakePlugin(const std::string& name) {
  const ReadLock lock(m_loadedPluginsMutex);
  const auto found = m_loadedPlugins.find(name);
  return found != m_loadedPlugins.end() ? found->second : std::make_shared<CPlugin>();
}

/// Adds the entry of `loaded`; an entry of the same name stays. Allocates nothing.
void CPluginManager::AddLoaded(LoadedPlugins loaded) {
  const WriteLock lock(m_loadedPluginsMutex);
  m_loadedPlugins.merge(loaded);
}

/// Drops the entry of a plugin that an earlier start loaded and this one could not load.
void CPluginManager::ForgetLoaded(const std::string& name) {
  const WriteLock lock(m_loadedPluginsMutex);
  m_loadedPlugins.erase(name);
}

/// Takes the entry of a plugin out of the loaded ones; empty when there is none.
CPluginManager::LoadedPlugins::node_type CPluginManager::TakeLoaded(const std::string& name) {
  const WriteLock lock(m_loadedPluginsMutex);
  return m_loadedPlugins.extract(name);
}

/// Gives the platform the names of the plugins whose Init succeeded, and adds the handles of all
/// loaded libraries to `out`.
void CPluginManager::ReportStarted(StartedPluginMap* out) {
  std::map<std::string, bool> started;
  {
    const ReadLock lock(m_pluginDataMutex);
    for (const auto& [key, plugin] : m_pluginData) {
      if (plugin->state == kInitSucceeded) started.emplace(plugin->name, true);
    }
  }
  UpdatePluginsLoadState(started);

  const ReadLock lock(m_loadedPluginsMutex);
  if (out == nullptr) return;
  for (const auto& [name, plugin] : m_loadedPlugins) {
    if (plugin) out->emplace(name, plugin->Handle());
  }
}

}  // namespace PluginFrame
