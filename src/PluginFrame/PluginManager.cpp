#include "src/PluginFrame/PluginManager.h"

#include <algorithm>
#include <boost/thread/lock_types.hpp>
#include <exception>
#include <mutex>
#include <set>
#include <utility>

#include "sdk/base/path.h"
#include "sdk/lpc/lpc.h"
#include "sdk/os/os.h"
#include "sdk/xrt/runtime.h"
#include "src/PluginFrame/PlatformHandover.h"
#include "src/PluginFrame/PluginFrameTask.h"
#include "src/PluginFrame/PluginGraph.h"
#include "src/PluginFrame/PluginLists.h"
#include "src/PluginFrame/ThreadPoolLease.h"
#include "src/PluginFrame/TimingTable.h"
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

void AddTimingLine(const std::string& plugin, const char* outcome, std::int32_t milliseconds) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginLoad");
  if (!AddTimingRow([&] { return "[" + plugin + "] " + outcome; }, milliseconds)) {
    FRAME_LOG(kTolerated, "%s", kRowIsLost);
  }
}

/// Plugins that refused to stop. They may still be running code of their own, so their libraries
/// stay mapped until the process ends: nothing here is ever destroyed.
struct RefusedPlugins {
  std::mutex mutex;
  std::multimap<std::string, std::shared_ptr<CPlugin>> plugins;  // guarded by mutex

  static RefusedPlugins& Instance() {
    static RefusedPlugins& instance = *new RefusedPlugins;
    return instance;
  }

  /// Allocates nothing.
  void Add(std::map<std::string, std::shared_ptr<CPlugin>>::node_type plugin) {
    const std::lock_guard<std::mutex> lock(mutex);
    plugins.insert(std::move(plugin));
  }
};

}  // namespace

/// Sets m_finishedCount to 0 for the next phase: at Finish, or when an exception ends this one.
class CPluginManager::PhaseCount {
 public:
  explicit PhaseCount(CPluginManager& manager) : m_manager(&manager) {}
  ~PhaseCount() {
    try {
      if (m_manager != nullptr) Finish();
    } catch (...) {
      return;  // the lock itself has failed, and something else has been thrown already
    }
  }
  PhaseCount(const PhaseCount&) = delete;
  PhaseCount& operator=(const PhaseCount&) = delete;

  /// Returns the lock of the count, held.
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
      manager = new CPluginManager;  // never deleted: tasks may outlive every other owner
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
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  FRAME_LOG(kProgress, "[PluginManager Init]----PluginManager Init start----");
  if (!ReadModels()) return false;
  MergeInstalledAddons();
  TrimPluginLists(m_productModel, KPX_GetRunningModule() == kDistributedModule);
  if (!HandOverProductModel()) return false;
  LogVersions();
  BuildGraph();
  if (!StartLpcFrame()) return false;
  RegisterPlugins();
  m_initialised = true;
  FRAME_LOG(kProgress, "[PluginManager Init]----PluginManager Init success----");
  return true;
}

bool CPluginManager::ReadModels() {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  const TevModelParse::CProductXmlReader reader;
  if (!reader.ReadServerModel(m_productModel)) {
    FRAME_LOG(kFatal,
              "[PluginManager Init]----ReadServerModel failed.Get product model param failed----");
    return false;
  }
  if (!reader.ReadServerAddonsModel(m_addonsModel)) {
    FRAME_LOG(kTolerated,
              "[PluginManager Init]----ReadServerAddonsModel failed."
              "Get product addons model param failed----");
  }
  if (!reader.ReadServerToolsModel(m_toolsModel)) {
    FRAME_LOG(kTolerated,
              "[PluginManager Init]----ReadServerToolsModel failed."
              "Get product tools model param failed----");
  }
  return true;
}

void CPluginManager::MergeInstalledAddons() {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  KPX_SetAddonAndToolModel(m_addonsModel, m_toolsModel);
  FRAME_LOG(kProgress, "[PluginManager Init]Set Addons and Tools Model to platform.");
  std::vector<AddonModel> installed;
  KPX_GetInstalledAddonModel(installed);
  FRAME_LOG(kProgress,
            "[PluginManager Init]Get signed & compatibled verify and installed addons size [%d].",
            static_cast<int>(installed.size()));
  for (const AddonModel& addon : installed) {
    FRAME_LOG(kProgress, "[PluginManager Init]Installed addon name [%s].", addon.ID.c_str());
    AddInstalledAddon(m_productModel, addon);
  }
}

bool CPluginManager::HandOverProductModel() {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  if (KPX_SetProductModel(m_productModel) == 0) {
    FRAME_LOG(kFatal,
              "[PluginManager Init]----KPX_SetProductModel failed."
              "Set product model param to platform failed----");
    return false;
  }
  FRAME_LOG(kProgress, "[PluginManager Init]Set product model param to platform success.");
  return true;
}

void CPluginManager::LogVersions() const {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  FRAME_LOG(kProgress, "[PluginManager Init]Plugins' version: [%s]",
            PluginVersionsText(m_productModel).c_str());
  FRAME_LOG(kProgress, "[PluginManager Init]Drivers' version: [%s]",
            DriverVersionsText(m_productModel).c_str());
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
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  const PlatformInfo info = MakePlatformInfo(m_productModel, GetCurExeDir());
  FRAME_LOG(kProgress, "[PluginManager Init]Switch Product Model to LPC frame info.");
  const std::int32_t error = TevLPCFrameInit("lpc_server_framework", info);
  if (error != 0) {
    FRAME_LOG(kFatal, "[PluginManager Init]----TevLPCFrameInit failed, errorcode[%d]----", error);
    return false;
  }
  FRAME_LOG(kProgress, "[PluginManager Init]TevLPCFrameInit success.");
  return true;
}

void CPluginManager::RegisterPlugins() const {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Init");
  AddPluginsInfo(MakePluginInfos(m_productModel));
  FRAME_LOG(kProgress, "[PluginManager Init]Set plugin info to platform success.");
}

bool CPluginManager::Start(StartedPluginMap* out) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Start");
  if (!m_initialised) return true;
  const Lock lifecycle(m_lifecycleMutex);
  FRAME_LOG(kProgress, "[PluginManager start]----PluginManager start----");
  ThreadPoolLease pool(PluginCount());
  if (!pool.Granted()) {
    FRAME_LOG(kFatal,
              "[PluginManager start]----PluginManager start failed.Get thread for %s failed.----",
              kThreadPool);
    return false;
  }
  if (!AddTimingRow([this] { return PluginsToInitText(m_productModel); }, kNoTiming)) {
    FRAME_LOG(kTolerated, "%s", kRowIsLost);
  }
  FRAME_LOG(kProgress, "[PluginManager start]Plugins init start...");
  const ULONGLONG begin = GetTickCount64();
  PhaseCount phase(*this);
  RunPhase(
      {true, &ReadyToStart, &CPluginManager::SinglePluginLoad, &CPluginManager::CountNotLoaded});
  pool.Release();
  FRAME_LOG(kProgress, "[PluginManager start]Plugins init end. Total cost time [%d]ms.",
            Elapsed(begin, GetTickCount64()));

  // Held to the end: a plugin that comes late, after a start cut short, is counted for the stop.
  const Lock count = phase.Finish();
  ReportStarted(out);
  TevLPCFrameNotifyStartPlugins("");
  FRAME_LOG(kProgress, "[PluginManager start]Notify plugin start by LPC.");
  FRAME_LOG(kProgress, "[PluginManager start]----PluginManager Start success----");
  return true;
}

void CPluginManager::Uninit() {
  FRAME_LOG_AS("PluginFrame::CPluginManager::Uninit");
  FRAME_LOG(kProgress, "[PluginManager Uninit]----CPluginManager::Uninit start.----");
  m_initialised = false;
  const Lock lifecycle(m_lifecycleMutex);
  FRAME_LOG(kProgress, "[PluginManager Uninit]Uninit lpc frame start.");
  if (TevLPCFrameUnInit() != 0) {
    FRAME_LOG_MODULE("platform.LPCIntegrate", kTolerated,
                     "[PluginManager Uninit]Uninit lpc frame end, failed.");
    return;
  }
  FRAME_LOG(kProgress, "[PluginManager Uninit]Uninit lpc frame end, success.");
  FRAME_LOG(kProgress, "[PluginManager Uninit]Get threads for uninit plugins start.");
  const std::int32_t plugins = PluginCount();
  ThreadPoolLease pool(plugins);
  if (!pool.Granted()) {
    FRAME_LOG(kFailure, "[PluginManager Uninit]Get threads for uninit plugins end, failed.");
    return;
  }
  FRAME_LOG(kProgress,
            "[PluginManager Uninit]Get threads for uninit plugins end, success(threads num = %d). ",
            plugins);
  const ULONGLONG begin = GetTickCount64();
  FRAME_LOG(kProgress, "[PluginManager Uninit]Uninit all plugins start.");
  RefusedPlugins::Instance();  // made while nothing is lost without memory for it
  PhaseCount phase(*this);
  RunPhase({false, &ReadyToStop, &CPluginManager::SinglePluginUnload,
            &CPluginManager::CountNotUnloaded});
  pool.Release();
  phase.Keep();
  FRAME_LOG(kProgress, "[PluginManager Uninit]]Uninit all plugins end.cost time [%d]ms.",
            Elapsed(begin, GetTickCount64()));
  FRAME_LOG(kProgress, "[PluginManager Uninit]CPluginManager::Uninit end.");
}

void CPluginManager::RunPhase(const Phase& phase) {
  std::set<std::string> posted;
  while (m_initialised == phase.initialised && !AllFinished()) {
    std::vector<std::string> refused;
    {
      const ReadLock lock(m_pluginDataMutex);
      for (const auto& [key, plugin] : m_pluginData) {
        if (posted.count(key) != 0 || !phase.ready(*plugin)) continue;
        posted.insert(key);
        const bool accepted = CThreadManager::Instance().PostTask(
            std::make_shared<CPluginFrameTask>(
                plugin->name,
                [this, work = phase.work](const std::string& name) { (this->*work)(name); }),
            false);
        if (!accepted) refused.push_back(plugin->name);
      }
    }
    for (const std::string& name : refused)
      (this->*phase.refused)(name, "the thread pool refused its task");
    XRT_Sleep(kPollMilliseconds);
  }
}

bool CPluginManager::AllFinished() {
  // More than all when a plugin comes late, after its start was cut short and its stop is counted.
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
  // An Init may end after the stop has passed its plugin by. The plugin stays stopped, or the stop
  // would wait for ever with those that it depends on.
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
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginLoad");
  FRAME_LOG(kProgress, "[Plugin Load]Plugin [%s] SinglePluginLoad Begin.", name.c_str());
  // A task that was still queued when its start was called off: what the plugin depends on may be
  // unmapped by now.
  if (HasStopped(name)) return CountNotLoaded(name, "the stop came first");
  try {
    LoadAndInit(name);
  } catch (const std::exception& error) {
    GiveUpStart(name, error.what());
  } catch (...) {
    GiveUpStart(name, "something that is no exception object");
  }
}

/// Counts a plugin whose load task an exception has interrupted, or the start would wait for ever.
void CPluginManager::GiveUpStart(const std::string& name, const char* reason) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginLoad");
  SetState(name, kInitFailed);
  const CountedPlugin counted(*this);
  FRAME_LOG(kFailure, "[Plugin Load]Plugin [%s] SinglePluginLoad End (%s). count[%d].",
            name.c_str(), reason, counted.Count());
}

void CPluginManager::CountNotLoaded(const std::string& name, const char* reason) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginLoad");
  SetState(name, kInitFailed);
  const CountedPlugin counted(*this);
  FRAME_LOG(kFailure, "[Plugin Load]Plugin %s not loaded (%s), count[%d].", name.c_str(), reason,
            counted.Count());
}

/// The work of SinglePluginLoad. Throws nothing once Init has been called.
void CPluginManager::LoadAndInit(const std::string& name) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginLoad");
  std::shared_ptr<CPlugin> plugin;
  {
    const ReadLock lock(m_loadedPluginsMutex);
    const auto found = m_loadedPlugins.find(name);
    plugin = found != m_loadedPlugins.end() ? found->second : std::make_shared<CPlugin>();
  }
  if (!plugin) {
    SetState(name, kInitFailed);
    const CountedPlugin counted(*this);
    FRAME_LOG(kFailure, "[Plugin Load]Plugin %s is null, InitFailed, count[%d].", name.c_str(),
              counted.Count());
    return;
  }
  if (!plugin->Load(LibraryPath(name))) {
    AddTimingLine(name, "Load Failed", kNoTiming);
    ForgetLoaded(name);
    plugin.reset();
    SetState(name, kInitFailed);
    const CountedPlugin counted(*this);
    FRAME_LOG(kFailure, "[Plugin Load]Plugin %s load failed, InitFailed, count[%d].", name.c_str(),
              counted.Count());
    return;
  }
  LoadedPlugins loaded = {{name, plugin}};  // the entry, made while nothing is lost without memory
  const ULONGLONG begin = GetTickCount64();
  FRAME_LOG(kProgress, "[Plugin Load]Plugin Init begin.[%s]", name.c_str());
  const bool initialised = plugin->Init();
  const std::int32_t cost = Elapsed(begin, GetTickCount64());
  if (initialised) {
    AddTimingLine(name, "Init OK", cost);
    FRAME_LOG(kProgress, "[Plugin Load]Plugin Init end. [%s] cost time [%d]ms", name.c_str(), cost);
  } else {
    AddTimingLine(name, "Init Failed", cost);
    FRAME_LOG(kFailure, "[Plugin Load]Plugin Init end (failed). [%s] cost time [%d]ms.",
              name.c_str(), cost);
  }
  SetState(name, initialised ? kInitSucceeded : kInitFailed);
  EnterLoaded(loaded);
  // Once counted, the plugin may be stopped: its library is then freed there and then, not when
  // this thread comes to its end.
  loaded.clear();
  plugin.reset();
  const CountedPlugin counted(*this);
  FRAME_LOG(initialised ? kProgress : kFailure,
            "[Plugin Load]Plugin [%s] SinglePluginLoad End. count[%d].", name.c_str(),
            counted.Count());
}

void CPluginManager::SinglePluginUnload(const std::string& name) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginUnload");
  FRAME_LOG(kProgress, "[Plugin Unload]Plugin [%s] SinglePluginUnload Begin.", name.c_str());
  if (name.empty()) {
    FRAME_LOG(kFailure, "[Plugin Unload]Plugin %s instance not found.", name.c_str());
    return;
  }
  LoadedPlugins::node_type entry;
  {
    const WriteLock lock(m_loadedPluginsMutex);
    entry = m_loadedPlugins.extract(name);
  }
  if (!entry || !entry.mapped()) {
    SetState(name, kUninitSucceeded);
    const CountedPlugin counted(*this);
    FRAME_LOG(kFailure, "[Plugin Unload]Plugin %s is null, UninitSuccess, count[%d].", name.c_str(),
              counted.Count());
    return;
  }
  const ULONGLONG begin = GetTickCount64();
  FRAME_LOG(kProgress, "[Plugin Unload]Plugin UnInit begin.[%s]", name.c_str());
  const bool stopped = entry.mapped()->UnInit();
  FRAME_LOG(kProgress, "[Plugin Unload]Plugin UnInit end. [%s] cost time [%d] ms.", name.c_str(),
            Elapsed(begin, GetTickCount64()));
  if (stopped) {
    entry.mapped().reset();
  } else {
    RefusedPlugins::Instance().Add(std::move(entry));
  }
  SetState(name, stopped ? kUninitSucceeded : kUninitFailed);
  const CountedPlugin counted(*this);
  FRAME_LOG(stopped ? kProgress : kFailure,
            "[Plugin Unload]Plugin [%s] SinglePluginUnload End. count[%d].", name.c_str(),
            counted.Count());
}

void CPluginManager::CountNotUnloaded(const std::string& name, const char* reason) {
  FRAME_LOG_AS("PluginFrame::CPluginManager::SinglePluginUnload");
  if (name.empty()) return;  // never counted
  SetState(name, kUninitFailed);
  const CountedPlugin counted(*this);
  FRAME_LOG(kFailure, "[Plugin Unload]Plugin %s not unloaded (%s), count[%d].", name.c_str(),
            reason, counted.Count());
}

/// Where a plugin's library lies, without its extension.
std::string CPluginManager::LibraryPath(const std::string& name) const {
  const auto& plugins = m_productModel.ServerPluginDescriptions;
  const auto plugin = std::find_if(plugins.begin(), plugins.end(),
                                   [&](const PluginDescription& p) { return p.ID == name; });
  return (plugin != plugins.end() ? plugin->Path : GetCurExeDir()) + name;
}

/// Moves `loaded` to the loaded plugins, where an entry that is there stays. Allocates nothing.
void CPluginManager::EnterLoaded(LoadedPlugins& loaded) {
  const WriteLock lock(m_loadedPluginsMutex);
  m_loadedPlugins.merge(loaded);
}

/// Drops the entry of a plugin that an earlier start loaded and this one could not.
void CPluginManager::ForgetLoaded(const std::string& name) {
  const WriteLock lock(m_loadedPluginsMutex);
  m_loadedPlugins.erase(name);
}

/// Tells the platform which plugins started well, and the caller which libraries are loaded.
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
