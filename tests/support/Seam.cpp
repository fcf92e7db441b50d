#include "tests/support/Seam.h"

#include <chrono>
#include <cstring>
#include <deque>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>

#include "reference/os/LocalText.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "sdk/xrt/lock.h"
#include "sdk/xrt/runtime.h"
#include "tests/support/Log.h"

using testing::Invoke;
using testing::Return;

namespace {

Seam* g_seam = nullptr;

/// The library whose entry this thread looked up last. Init and UnInit have no argument that says
/// which library they belong to.
thread_local ScriptedLibrary* t_library = nullptr;

bool RunInit() {
  return t_library->init();
}
bool RunUnInit() {
  return t_library->uninit();
}

/// What GetLastError answers.
thread_local DWORD t_error = 0;

std::string LibraryName(const std::string& path) {
  const std::string file = path.substr(path.find_last_of("/\\") + 1);
  return file.substr(0, file.size() - std::strlen(".dll"));
}

}  // namespace

Seam::Seam() {
  if (g_seam != nullptr) throw std::logic_error("one seam at a time");
  g_seam = this;
  ON_CALL(platform, Init).WillByDefault(Invoke(&m_platform, &PlatformDouble::Init));
  ON_CALL(platform, Start).WillByDefault(Invoke(&m_platform, &PlatformDouble::Start));
  ON_CALL(platform, Stop).WillByDefault(Invoke(&m_platform, &PlatformDouble::Stop));
  ON_CALL(platform, UnInit).WillByDefault(Invoke(&m_platform, &PlatformDouble::UnInit));
  ON_CALL(platform, GetLastError).WillByDefault(Invoke(&m_platform, &PlatformDouble::GetLastError));
  ON_CALL(platform, GetVersion).WillByDefault(Invoke(&PlatformDouble::GetVersion));
  ON_CALL(platform, GetRunningModule).WillByDefault(Return(1));
  ON_CALL(platform, SetProductModel).WillByDefault(Return(1));
  ON_CALL(lpc, Init).WillByDefault(testing::InvokeWithoutArgs(&m_lpc, &LpcDouble::Init));
  ON_CALL(lpc, UnInit).WillByDefault(Invoke(&m_lpc, &LpcDouble::UnInit));
  ON_CALL(threads, Grant).WillByDefault(Return(1U));
  ON_CALL(threads, Post).WillByDefault(Return(true));
}

Seam::~Seam() {
  m_platform.Stop();  // its thread may still wait for tasks
  m_pools.clear();
  g_seam = nullptr;
}

Seam& Seam::Current() {
  if (g_seam == nullptr) throw std::logic_error("the frame called out without a seam");
  return *g_seam;
}

void Seam::Record(const std::string& call) {
  Log::Instance().AddCall(call);
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_calls.push_back(call);
}

std::vector<std::string> Seam::Calls() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_calls;
}

void Seam::RunTasks() {
  std::vector<std::shared_ptr<CTMTask>> waiting;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    waiting.swap(tasks);
  }
  Run(waiting);
}

void Seam::Run(const std::vector<std::shared_ptr<CTMTask>>& some) {
  std::set<PoolDouble*> pools;
  for (const auto& task : some) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    PoolDouble* pool = FindPool(task->Group());
    pools.insert(pool);
    pool->Run(task, false);
  }
  for (PoolDouble* pool : pools) pool->AwaitTasks();
}

bool Seam::CallBack(KPXStartFinishFn finished, StartedPluginMap* started) {
  bool result = false;
  std::thread([&] { result = finished(started); }).join();
  return result;
}

/// The pool that was granted last under this name, whether or not it has been released.
PoolDouble* Seam::FindPool(const std::string& name) {
  PoolDouble* found = nullptr;
  for (PoolDouble& pool : m_pools) found = pool.Name() == name ? &pool : found;
  return found;
}

PoolDouble* Seam::FindGranted(const std::string& name) {
  PoolDouble* pool = FindPool(name);
  return pool != nullptr && pool->IsGranted() ? pool : nullptr;
}

unsigned int Seam::Grant(const std::string& name, int least, int most, int reserved) {
  const unsigned int granted = threads.Grant(name, least, most, reserved);
  if (granted == 0) return 0;
  const std::lock_guard<std::mutex> lock(m_mutex);
  PoolDouble* pool = FindGranted(name);
  if (pool == nullptr) pool = &m_pools.emplace_back(name);
  pool->Grant(least, reserved);
  return granted;
}

bool Seam::Post(std::shared_ptr<CTMTask> task, bool urgent) {
  m_limit.Restart();
  if (!threads.Post(task->Group(), urgent)) return false;
  const std::lock_guard<std::mutex> lock(m_mutex);
  PoolDouble* pool = FindGranted(task->Group());
  if (pool == nullptr) return false;
  if (keepsTasks) {
    tasks.insert(urgent ? tasks.begin() : tasks.end(), std::move(task));
  } else {
    pool->Run(std::move(task), urgent);
  }
  return true;
}

bool Seam::Release(const std::string& name, bool wait) {
  threads.Release(name, wait);
  PoolDouble* pool = nullptr;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    pool = FindGranted(name);
    if (pool == nullptr || (wait && pool->IsOnOwnThread())) return false;
    pool->Release();
  }
  if (wait) {
    RunTasks();
    pool->AwaitTasks();
  }
  return true;
}

ScriptedLibrary* Seam::Load(const std::string& path) {
  ScriptedLibrary* library = nullptr;
  bool isMapped = false;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    loadedPaths.push_back(path);
    const auto found = libraries.find(LibraryName(path));
    if (found == libraries.end() || !found->second.loads) return nullptr;
    library = &found->second;
    isMapped = library->handles > 0;
  }
  if (!isMapped) library->onLoad();
  const std::lock_guard<std::mutex> lock(m_mutex);
  ++library->handles;
  return library;
}

bool Seam::Free(ScriptedLibrary& library) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (library.handles == 0) return false;
  }
  library.onFree();
  const std::lock_guard<std::mutex> lock(m_mutex);
  --library.handles;
  return true;
}

void Seam::NoteLockCall(const char* call) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  lockCalls.emplace_back(call);
}

void Seam::Sleep(std::uint32_t milliseconds) {
  m_limit.Check("the frame waits for plugins, and none is counted any more");
  now += milliseconds;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    sleeps.push_back(milliseconds);
  }
  // Lets other threads run, and keeps the records of a loop that does not end small.
  std::this_thread::sleep_for(std::chrono::microseconds(20));
  onSleep();
}

// ---------------------------------------------------------------- the platform library

std::int32_t KPX_Init() {
  Seam::Current().Record("KPX_Init");
  return Seam::Current().platform.Init();
}

std::int32_t KPX_Start(KPXStartFinishFn finished) {
  Seam::Current().Record("KPX_Start");
  return Seam::Current().platform.Start(finished);
}

std::int32_t KPX_PreUnInit() {
  Seam::Current().Record("KPX_PreUnInit");
  return Seam::Current().platform.PreUnInit();
}

std::int32_t KPX_Stop() {
  Seam::Current().Record("KPX_Stop");
  return Seam::Current().platform.Stop();
}

std::int32_t KPX_UnInit() {
  Seam::Current().Record("KPX_UnInit");
  return Seam::Current().platform.UnInit();
}

std::int32_t KPX_GetLastError(char* text, std::int32_t size) {
  return Seam::Current().platform.GetLastError(text, size);
}

std::int32_t KPX_GetVersion(char* text, std::int32_t size) {
  return Seam::Current().platform.GetVersion(text, size);
}

void KPX_SetAddonAndToolModel(const std::vector<AddonModel>& addons,
                              const std::vector<ToolModel>& tools) {
  Seam::Current().Record("KPX_SetAddonAndToolModel");
  Seam::Current().platform.SetAddonAndToolModel(addons, tools);
}

void KPX_GetInstalledAddonModel(std::vector<AddonModel>& installed) {
  Seam::Current().Record("KPX_GetInstalledAddonModel");
  Seam::Current().platform.GetInstalledAddonModel(installed);
}

std::int32_t KPX_GetRunningModule() {
  Seam::Current().Record("KPX_GetRunningModule");
  return Seam::Current().platform.GetRunningModule();
}

std::int32_t KPX_SetProductModel(const ProductModel& model) {
  Seam::Current().Record("KPX_SetProductModel");
  return Seam::Current().platform.SetProductModel(model);
}

void AddPluginsInfo(const PluginInfoMap& plugins) {
  Seam::Current().Record("AddPluginsInfo");
  Seam::Current().platform.AddPluginsInfo(plugins);
}

void UpdatePluginsLoadState(const std::map<std::string, bool>& started) {
  Seam::Current().Record("UpdatePluginsLoadState");
  Seam::Current().platform.UpdatePluginsLoadState(started);
}

void pluginTakeTimeCountPrint(const std::string& text, std::int32_t milliseconds) {
  Log::Instance().AddCall("timing row [" + text + "]");
  Seam::Current().platform.TakeTime(text, milliseconds);
}

// ---------------------------------------------------------------- the local-procedure-call
// framework

std::int32_t TevLPCFrameInit(const std::string& name, const PlatformInfo& info) {
  Seam::Current().Record("TevLPCFrameInit");
  return Seam::Current().lpc.Init(name, info);
}

void TevLPCFrameNotifyStartPlugins(const std::string& text) {
  Seam::Current().Record("TevLPCFrameNotifyStartPlugins");
  Seam::Current().lpc.Notify(text);
}

std::int32_t TevLPCFrameUnInit() {
  Seam::Current().Record("TevLPCFrameUnInit");
  return Seam::Current().lpc.UnInit();
}

// ---------------------------------------------------------------- the base library

CTMTask::CTMTask(const std::string& group) : m_group(group) {}
CTMTask::~CTMTask() = default;
void CTMTask::Exec() {
  DoTask();
}

CThreadManager& CThreadManager::Instance() {
  static CThreadManager manager;
  return manager;
}

unsigned int CThreadManager::GetAvailableThreadpool(const std::string& name, int least, int most,
                                                    int reserved) {
  Log::Instance().AddCall("GetAvailableThreadpool");
  return Seam::Current().Grant(name, least, most, reserved);
}

bool CThreadManager::PostTask(std::shared_ptr<CTMTask> task, bool urgent) {
  Log::Instance().AddCall("PostTask");
  return Seam::Current().Post(std::move(task), urgent);
}

bool CThreadManager::ReleaseThread(const std::string& name, bool wait) {
  Log::Instance().AddCall("ReleaseThread");
  return Seam::Current().Release(name, wait);
}

std::string GetCurExeDir() {
  const std::string& path = Seam::Current().exePath;
  return path.substr(0, path.find_last_of("/\\") + 1);
}

std::wstring LocalToWide(const std::string& text) {
  return WideFromLocal(text);
}

// ---------------------------------------------------------------- the operating system

HMODULE LoadLibraryW(const wchar_t* path) {
  Log::Instance().AddCall("LoadLibraryW");
  Seam& seam = Seam::Current();
  ScriptedLibrary* library = seam.Load(LocalFromWide(path));
  if (library == nullptr) t_error = seam.loadError;
  return reinterpret_cast<HMODULE>(library);
}

FARPROC GetProcAddress(HMODULE handle, const char* name) {
  auto* library = reinterpret_cast<ScriptedLibrary*>(handle);
  const bool init = std::strcmp(name, "Init") == 0;
  const bool uninit = std::strcmp(name, "UnInit") == 0;
  if (library == nullptr || !((init && library->hasInit) || (uninit && library->hasUnInit))) {
    t_error = library == nullptr ? ERROR_INVALID_HANDLE : ERROR_PROC_NOT_FOUND;
    return nullptr;
  }
  t_library = library;
  Log::Instance().AddCall(std::string("GetProcAddress ") + name);
  return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(init ? &RunInit : &RunUnInit));
}

BOOL FreeLibrary(HMODULE handle) {
  Log::Instance().AddCall("FreeLibrary");
  auto* library = reinterpret_cast<ScriptedLibrary*>(handle);
  if (library != nullptr && Seam::Current().Free(*library)) return 1;
  t_error = ERROR_INVALID_HANDLE;
  return 0;
}

DWORD GetLastError() {
  return t_error;
}

ULONGLONG GetTickCount64() {
  return Seam::Current().now;
}

// ---------------------------------------------------------------- the portable runtime

namespace {

/// What a lock's state stands for.
struct LockDouble {
  bool isRecursive;
  std::mutex mutex;
  std::atomic<std::thread::id> holder{std::thread::id()};
  int depth = 0;  // guarded by mutex
};

/// Never destroyed: a lock may be static. A copied state stands for the same lock.
struct LockDoubles {
  std::mutex mutex;
  std::deque<LockDouble> locks;  // guarded by mutex; none is ever removed

  static LockDoubles& Instance() {
    static LockDoubles& instance = *new LockDoubles;
    return instance;
  }
};

/// Fills each lock's state with different bytes, so that a copied state differs from a new one.
void MakeLock(xrt::LockState& state, bool isRecursive) {
  LockDoubles& all = LockDoubles::Instance();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const std::size_t place = all.locks.size();
  all.locks.emplace_back().isRecursive = isRecursive;
  std::memset(state.bytes, 0xA5, sizeof(state.bytes));
  std::memcpy(state.bytes, &place, sizeof(place));
}

LockDouble& FindLock(const xrt::LockState& state) {
  LockDoubles& all = LockDoubles::Instance();
  std::size_t place = 0;
  std::memcpy(&place, state.bytes, sizeof(place));
  const std::lock_guard<std::mutex> lock(all.mutex);
  return all.locks.at(place);
}

constexpr std::int32_t kMisused = 1;

/// A misuse fails the test: what the system does then differs.
std::int32_t Lock(const xrt::LockState& state) {
  LockDouble& lock = FindLock(state);
  if (lock.holder != std::this_thread::get_id()) {
    lock.mutex.lock();
    lock.holder = std::this_thread::get_id();
  } else if (!lock.isRecursive) {
    ADD_FAILURE() << "a lock that is not recursive is taken again by its holder";
    return kMisused;
  }
  ++lock.depth;
  Seam::Current().NoteLockCall("Lock");
  return 0;
}

std::int32_t Unlock(const xrt::LockState& state) {
  LockDouble& lock = FindLock(state);
  if (lock.holder != std::this_thread::get_id()) {
    ADD_FAILURE() << "a lock is released that its thread does not hold";
    return kMisused;
  }
  Seam::Current().NoteLockCall("Unlock");
  if (--lock.depth > 0) return 0;
  lock.holder = std::thread::id();
  lock.mutex.unlock();
  return 0;
}

}  // namespace

XRT_Mutex::XRT_Mutex() {
  MakeLock(m_state, false);
}
XRT_Mutex::~XRT_Mutex() = default;
std::int32_t XRT_Mutex::Lock() {
  return ::Lock(m_state);
}
std::int32_t XRT_Mutex::Unlock() {
  return ::Unlock(m_state);
}

namespace xrt {

xrt_mutex::xrt_mutex() {
  MakeLock(m_state, false);
}
xrt_mutex::~xrt_mutex() = default;
std::int32_t xrt_mutex::Lock() {
  return ::Lock(m_state);
}
std::int32_t xrt_mutex::Unlock() {
  return ::Unlock(m_state);
}

xrt_recursive_mutex::xrt_recursive_mutex() {
  MakeLock(m_state, true);
}
xrt_recursive_mutex::~xrt_recursive_mutex() = default;
std::int32_t xrt_recursive_mutex::Lock() {
  return ::Lock(m_state);
}
std::int32_t xrt_recursive_mutex::Unlock() {
  return ::Unlock(m_state);
}

}  // namespace xrt

std::int32_t XRT_GetCurExePath(char* buffer, std::int32_t size) {
  Seam::Current().onExePath();
  const std::string& path = Seam::Current().exePath;
  if (size <= 0 || path.size() >= static_cast<std::size_t>(size)) return -1;
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return 0;
}

void XRT_Sleep(std::uint32_t milliseconds) {
  Log::Instance().AddCall("XRT_Sleep");
  Seam::Current().Sleep(milliseconds);
}
