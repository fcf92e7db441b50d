#include "tests/load/LibraryDoubles.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sdk/base/log.h"
#include "sdk/base/path.h"
#include "sdk/lpc/lpc.h"
#include "sdk/os/os.h"
#include "sdk/xrt/lock.h"
#include "sdk/xrt/runtime.h"

namespace {

LibraryDoubles* g_doubles = nullptr;
thread_local WatchedPlugin* t_plugin = nullptr;  // the plugin whose entry was looked up last
thread_local int t_doubles = 0;                  // how many InDoubles this thread has

/// Waits not at all, yields to another thread, or sleeps for some microseconds.
void LittleWhile(std::mt19937& random) {
  switch (random() % 4) {
    case 0:
      return;
    case 1:
      std::this_thread::yield();
      return;
    default:
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 80));
      return;
  }
}

bool RunInit() {
  WatchedPlugin& plugin = *t_plugin;
  LibraryDoubles& doubles = LibraryDoubles::Current();
  if (++plugin.inits != 1) doubles.Fault("second Init of " + plugin.name);
  for (const WatchedPlugin* needed : plugin.needs) {
    if (needed->initsDone == 0) doubles.Fault("Init of " + plugin.name + " before " + needed->name);
  }
  if (plugin.onInit) plugin.onInit();
  ++plugin.initsDone;
  return plugin.succeeds;
}

bool RunUnInit() {
  WatchedPlugin& plugin = *t_plugin;
  LibraryDoubles& doubles = LibraryDoubles::Current();
  if (++plugin.uninits != 1) doubles.Fault("second UnInit of " + plugin.name);
  for (const WatchedPlugin* dependent : plugin.neededBy) {
    if (dependent->inits != 0 && dependent->loads && dependent->uninitsDone == 0) {
      doubles.Fault("UnInit of " + plugin.name + " before " + dependent->name);
    }
  }
  if (plugin.onUnInit) plugin.onUnInit();
  ++plugin.uninitsDone;
  return plugin.stops;
}

}  // namespace

InDoubles::InDoubles() {
  ++t_doubles;
}

InDoubles::~InDoubles() {
  --t_doubles;
}

bool InDoubles::IsHere() {
  return t_doubles > 0;
}

LibraryDoubles::LibraryDoubles(unsigned seed) {
  g_doubles = this;
  for (unsigned i = 0; i < 4; ++i) m_threads.emplace_back([this, seed, i] { Work(seed + i); });
}

LibraryDoubles::~LibraryDoubles() {
  {
    const std::lock_guard<std::mutex> lock(m_queueMutex);
    m_closing = true;
    m_changed.notify_all();
  }
  for (std::thread& thread : m_threads) thread.join();
  g_doubles = nullptr;
}

LibraryDoubles& LibraryDoubles::Current() {
  return *g_doubles;
}

WatchedPlugin& LibraryDoubles::Add(const std::vector<std::size_t>& needs) {
  WatchedPlugin& plugin = plugins.emplace_back();
  plugin.name = "p" + std::to_string(plugins.size() - 1);
  for (const std::size_t needed : needs) {
    plugin.needs.push_back(&plugins[needed]);
    plugins[needed].neededBy.push_back(&plugin);
  }
  return plugin;
}

WatchedPlugin* LibraryDoubles::Find(const std::string& name) {
  if (name.size() < 2 || name[0] != 'p') return nullptr;
  const auto place = static_cast<std::size_t>(std::atoi(name.c_str() + 1));
  return place < plugins.size() ? &plugins[place] : nullptr;
}

std::string LibraryDoubles::Words() const {
  std::string words;
  for (const WatchedPlugin& plugin : plugins) {
    words += plugin.name + ":";
    for (const WatchedPlugin* needed : plugin.needs) words += needed->name + ",";
    if (words.back() == ',') words.pop_back();
    words += " ";
  }
  return words;
}

void LibraryDoubles::Fault(const std::string& what) {
  const InDoubles here;
  const std::lock_guard<std::mutex> lock(mutex);
  faults.push_back(what);
}

void LibraryDoubles::Rest() {
  m_limit.Check("the frame waits for plugins, and none is counted any more");
  ++rests;
  std::this_thread::sleep_for(std::chrono::microseconds(20));
}

void LibraryDoubles::Post(std::shared_ptr<CTMTask> task) {
  m_limit.Restart();
  const std::lock_guard<std::mutex> lock(m_queueMutex);
  m_queue.push_back(std::move(task));
  m_changed.notify_one();
}

void LibraryDoubles::AwaitTasks() {
  std::unique_lock<std::mutex> lock(m_queueMutex);
  const bool ended =
      m_changed.wait_for(lock, kLongestWait, [this] { return m_queue.empty() && m_running == 0; });
  if (!ended) FailAndExit("a task of the pool does not end");
}

void LibraryDoubles::Work(unsigned seed) {
  std::mt19937 random(seed);
  std::unique_lock<std::mutex> lock(m_queueMutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_closing || !m_queue.empty(); });
    if (m_queue.empty()) return;
    const std::size_t place = random() % m_queue.size();
    const auto chosen = m_queue.begin() + static_cast<std::ptrdiff_t>(place);
    std::shared_ptr<CTMTask> task = std::move(*chosen);
    m_queue.erase(chosen);
    ++m_running;
    lock.unlock();
    LittleWhile(random);
    task->Exec();
    task.reset();
    if (onTaskEnd) onTaskEnd();
    lock.lock();
    --m_running;
    m_changed.notify_all();
  }
}

// ---------------------------------------------------------------- the base library

void IKPXFormatLog(int, const char*, const char* format, ...) noexcept {
  if (std::strstr(format, "count[%d]") == nullptr) return;
  const InDoubles here;
  char text[512];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  LibraryDoubles& doubles = LibraryDoubles::Current();
  const std::lock_guard<std::mutex> lock(doubles.mutex);
  doubles.counts.push_back(std::atoi(std::strstr(text, "count[") + 6));
}

CTMTask::CTMTask(const std::string& group) : m_group(group) {}
CTMTask::~CTMTask() = default;
void CTMTask::Exec() {
  DoTask();
}

CThreadManager& CThreadManager::Instance() {
  static CThreadManager manager;
  return manager;
}
unsigned int CThreadManager::GetAvailableThreadpool(const std::string&, int, int, int) {
  return 1;
}
bool CThreadManager::PostTask(std::shared_ptr<CTMTask> task, bool) {
  LibraryDoubles::Current().Post(std::move(task));
  return true;
}
bool CThreadManager::ReleaseThread(const std::string&, bool) {
  return true;
}

std::string GetCurExeDir() {
  const std::string& path = LibraryDoubles::Current().exePath;
  return path.substr(0, path.find_last_of('/') + 1);
}

std::wstring LocalToWide(const std::string& text) {
  return std::wstring(text.begin(), text.end());
}

// ---------------------------------------------------------------- the operating system

HMODULE LoadLibraryW(const wchar_t* path) {
  const InDoubles here;
  std::string name;
  for (const wchar_t* at = path; *at != 0; ++at) name += static_cast<char>(*at);
  name = name.substr(name.find_last_of('/') + 1);
  WatchedPlugin* plugin = LibraryDoubles::Current().Find(name.substr(0, name.size() - 4));
  if (plugin == nullptr) return nullptr;
  if (!plugin->loads) {
    ++plugin->initsDone;
    return nullptr;
  }
  ++plugin->handles;
  if (plugin->onLoad) plugin->onLoad();
  return reinterpret_cast<HMODULE>(plugin);
}

FARPROC GetProcAddress(HMODULE library, const char* name) {
  t_plugin = reinterpret_cast<WatchedPlugin*>(library);
  bool (*const entry)() = std::strcmp(name, "Init") == 0 ? &RunInit : &RunUnInit;
  return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(entry));
}

BOOL FreeLibrary(HMODULE library) {
  --reinterpret_cast<WatchedPlugin*>(library)->handles;
  return 1;
}

DWORD GetLastError() {
  return 0;
}

ULONGLONG GetTickCount64() {
  return 0;
}

// ---------------------------------------------------------------- the runtime

XRT_Mutex::XRT_Mutex() : m_state() {}
XRT_Mutex::~XRT_Mutex() = default;
std::int32_t XRT_Mutex::Lock() {
  return 0;
}
std::int32_t XRT_Mutex::Unlock() {
  return 0;
}

namespace xrt {

xrt_mutex::xrt_mutex() : m_state() {}
xrt_mutex::~xrt_mutex() = default;
xrt_recursive_mutex::xrt_recursive_mutex() : m_state() {}
xrt_recursive_mutex::~xrt_recursive_mutex() = default;

}  // namespace xrt

std::int32_t XRT_GetCurExePath(char* buffer, std::int32_t size) {
  std::snprintf(buffer, static_cast<std::size_t>(size), "%s",
                LibraryDoubles::Current().exePath.c_str());
  return 0;
}

void XRT_Sleep(std::uint32_t) {
  LibraryDoubles::Current().Rest();
}

// ---------------------------------------------------------------- platform, local procedure calls

std::int32_t KPX_Init() {
  return 0;
}
std::int32_t KPX_Start(KPXStartFinishFn) {
  return 0;
}
std::int32_t KPX_PreUnInit() {
  return 0;
}
std::int32_t KPX_Stop() {
  return 0;
}
std::int32_t KPX_UnInit() {
  return 0;
}
std::int32_t KPX_GetLastError(char*, std::int32_t) {
  return 0;
}
std::int32_t KPX_GetVersion(char*, std::int32_t) {
  return 0;
}
void KPX_SetAddonAndToolModel(const std::vector<AddonModel>& addons,
                              const std::vector<ToolModel>& tools) {
  LibraryDoubles::Current().addons = addons;
  LibraryDoubles::Current().tools = tools;
}
void KPX_GetInstalledAddonModel(std::vector<AddonModel>&) {}
std::int32_t KPX_GetRunningModule() {
  return 1;
}
std::int32_t KPX_SetProductModel(const ProductModel& model) {
  LibraryDoubles::Current().productModel = model;
  return 1;
}
void AddPluginsInfo(const PluginInfoMap&) {}

void UpdatePluginsLoadState(const std::map<std::string, bool>& started) {
  LibraryDoubles& doubles = LibraryDoubles::Current();
  const std::lock_guard<std::mutex> lock(doubles.mutex);
  doubles.loadState = started;
}

void pluginTakeTimeCountPrint(const std::string& text, std::int32_t) {
  const InDoubles here;
  LibraryDoubles& doubles = LibraryDoubles::Current();
  const std::lock_guard<std::mutex> lock(doubles.mutex);
  ++doubles.timing[text];
}

std::int32_t TevLPCFrameInit(const std::string&, const PlatformInfo&) {
  return 0;
}
void TevLPCFrameNotifyStartPlugins(const std::string&) {}
std::int32_t TevLPCFrameUnInit() {
  return 0;
}
