#include "tests/support/Seam.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "sdk/xrt/lock.h"
#include "sdk/xrt/runtime.h"

using testing::_;
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

std::string Narrow(const wchar_t* text) {
  std::string narrow;
  for (; *text != L'\0'; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

std::string LibraryName(const std::string& path) {
  const std::string file = path.substr(path.find_last_of("/\\") + 1);
  return file.substr(0, file.size() - std::strlen(".dll"));
}

}  // namespace

Seam::Seam() {
  if (g_seam != nullptr) throw std::logic_error("one seam at a time");
  g_seam = this;
  ON_CALL(platform, GetRunningModule).WillByDefault(Return(1));
  ON_CALL(platform, SetProductModel).WillByDefault(Return(1));
  ON_CALL(threads, Grant).WillByDefault(Return(1U));
  ON_CALL(threads, Post).WillByDefault(Return(true));
}

Seam::~Seam() {
  g_seam = nullptr;
}

Seam& Seam::Current() {
  if (g_seam == nullptr) throw std::logic_error("the frame called out without a seam");
  return *g_seam;
}

void Seam::Record(const std::string& call) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_calls.push_back(call);
}

std::vector<std::string> Seam::Calls() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_calls;
}

void Seam::RunTasks() {
  std::vector<std::shared_ptr<CTMTask>> waiting;
  waiting.swap(tasks);
  for (const auto& task : waiting) task->Exec();
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
  return Seam::Current().threads.Grant(name, least, most, reserved);
}

bool CThreadManager::PostTask(std::shared_ptr<CTMTask> task, bool urgent) {
  const bool accepted = Seam::Current().threads.Post(task->Group(), urgent);
  if (accepted) Seam::Current().tasks.push_back(std::move(task));
  return accepted;
}

bool CThreadManager::ReleaseThread(const std::string& name, bool wait) {
  Seam::Current().threads.Release(name, wait);
  return true;
}

std::string GetCurExeDir() {
  const std::string& path = Seam::Current().exePath;
  return path.substr(0, path.find_last_of("/\\") + 1);
}

std::wstring LocalToWide(const std::string& text) {
  std::wstring wide;
  for (const char c : text) wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return wide;
}

// ---------------------------------------------------------------- the operating system

HMODULE LoadLibraryW(const wchar_t* path) {
  Seam& seam = Seam::Current();
  const std::string narrow = Narrow(path);
  seam.loadedPaths.push_back(narrow);
  const auto library = seam.libraries.find(LibraryName(narrow));
  if (library == seam.libraries.end() || !library->second.loads) return nullptr;
  library->second.onLoad();
  ++library->second.handles;
  return reinterpret_cast<HMODULE>(&library->second);
}

FARPROC GetProcAddress(HMODULE library, const char* name) {
  t_library = reinterpret_cast<ScriptedLibrary*>(library);
  const bool init = std::strcmp(name, "Init") == 0;
  if (!init && std::strcmp(name, "UnInit") != 0) return nullptr;
  if (init ? !t_library->hasInit : !t_library->hasUnInit) return nullptr;
  return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(init ? &RunInit : &RunUnInit));
}

BOOL FreeLibrary(HMODULE library) {
  ScriptedLibrary& scripted = *reinterpret_cast<ScriptedLibrary*>(library);
  scripted.onFree();
  --scripted.handles;
  return 1;
}

DWORD GetLastError() {
  return Seam::Current().loadError;
}

ULONGLONG GetTickCount64() {
  return Seam::Current().now;
}

// ---------------------------------------------------------------- the portable runtime

namespace {

/// Fills each lock's state with different bytes, so that a copied state differs from a new one.
void FillState(xrt::LockState& state) {
  static unsigned char number = 0;
  std::memset(state.bytes, ++number, sizeof(state.bytes));
}

std::recursive_mutex& AnyLock() {
  static std::recursive_mutex mutex;
  return mutex;
}

std::int32_t LockAny(const char* call, bool lock) {
  if (lock) AnyLock().lock();
  Seam::Current().lockCalls.push_back(call);
  if (!lock) AnyLock().unlock();
  return 0;
}

}  // namespace

XRT_Mutex::XRT_Mutex() {
  FillState(m_state);
}
XRT_Mutex::~XRT_Mutex() = default;
std::int32_t XRT_Mutex::Lock() {
  return LockAny("Lock", true);
}
std::int32_t XRT_Mutex::Unlock() {
  return LockAny("Unlock", false);
}

namespace xrt {

xrt_mutex::xrt_mutex() {
  FillState(m_state);
}
xrt_mutex::~xrt_mutex() = default;
xrt_recursive_mutex::xrt_recursive_mutex() {
  FillState(m_state);
}
xrt_recursive_mutex::~xrt_recursive_mutex() = default;

}  // namespace xrt

std::int32_t XRT_GetCurExePath(char* buffer, std::int32_t size) {
  const std::string& path = Seam::Current().exePath;
  if (path.size() >= static_cast<std::size_t>(size)) return -1;
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return 0;
}

void XRT_Sleep(std::uint32_t milliseconds) {
  Seam::Current().sleeps.push_back(milliseconds);
  Seam::Current().onSleep();
}
