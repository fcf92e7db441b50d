#include "sdk/kpx/platform.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "reference/kpx/PlatformRecord.h"
#include "sdk/base/log.h"

namespace {

constexpr char kModule[] = "platform.Reference";
constexpr char kVersion[] = TEV_VERSION;

enum ErrorCode : std::int32_t {
  kNone = 0,
  kOutOfOrder = 1,   // a call too early, or a second time
  kBadArgument = 2,  // a null callback
  kNoThread = 3,     // the system could not create a thread
  kStartFailed = 4   // the start callback returned false or threw
};

/// The platform's state. `mutex` guards everything but `starter`, which only the host's thread
/// uses, and `startObserver`, guarded by `observerMutex`, which is held while it is called.
struct Platform {
  std::mutex mutex;
  bool up = false;
  std::int32_t runningModule = 1;
  PlatformRecord record;
  ErrorCode errorCode = kNone;
  std::string errorText;

  std::thread starter;

  std::mutex observerMutex;
  std::function<void()> startObserver;
};

/// Never destroyed: the host may end while the starter thread still waits for a plugin.
Platform& ThePlatform() {
  static Platform& platform = *new Platform;
  return platform;
}

template <typename Work>
auto WithPlatform(Work work) {
  Platform& platform = ThePlatform();
  const std::lock_guard<std::mutex> lock(platform.mutex);
  return work(platform);
}

void SetError(Platform& platform, ErrorCode code, const std::string& text) {
  platform.errorCode = code;
  platform.errorText = text;
}

std::int32_t Fail(ErrorCode code, const std::string& text) {
  WithPlatform([&](Platform& platform) { SetError(platform, code, text); });
  IKPXFormatLog(5, kModule, "%s", text.c_str());
  return code;
}

bool CallBack(KPXStartFinishFn finished, StartedPluginMap& started) {
  try {
    return finished(&started);
  } catch (const std::exception& error) {
    IKPXFormatLog(5, kModule, "the start callback threw: %s", error.what());
  } catch (...) {
    IKPXFormatLog(5, kModule, "the start callback threw something that is no exception object");
  }
  return false;
}

void ObserveStart() noexcept try {
  Platform& platform = ThePlatform();
  const std::lock_guard<std::mutex> lock(platform.observerMutex);
  if (platform.startObserver) platform.startObserver();
} catch (...) {
  // The platform's thread must end even if the observer throws.
}

void FinishStart(KPXStartFinishFn finished) {
  StartedPluginMap started;
  const bool result = CallBack(finished, started);
  const std::string failure = "the start callback did not succeed";
  WithPlatform([&](Platform& platform) {
    for (const auto& plugin : started) platform.record.handles.push_back(plugin.first);
    // Under the same lock: a thread that sees the failed result also finds the reason.
    platform.record.callbackResult = result;
    if (!result) SetError(platform, kStartFailed, failure);
  });
  if (!result) IKPXFormatLog(5, kModule, "%s", failure.c_str());
  ObserveStart();
}

/// Copies as much of `source` as fits into `text`, which has `size` bytes; zero-terminated.
void CopyText(const std::string& source, char* text, std::int32_t size) {
  if (text == nullptr || size <= 0) return;
  const std::size_t length = std::min(source.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(text, source.data(), length);
  text[length] = '\0';
}

}  // namespace

std::int32_t KPX_Init() {
  const bool wasUp = WithPlatform([](Platform& platform) {
    if (platform.up) return true;
    platform.up = true;
    platform.record = PlatformRecord();
    SetError(platform, kNone, "");
    return false;
  });
  return wasUp ? Fail(kOutOfOrder, "KPX_Init: the platform is up already") : kNone;
}

std::int32_t KPX_Start(KPXStartFinishFn finished) {
  if (finished == nullptr) return Fail(kBadArgument, "KPX_Start: no start callback was given");
  if (!WithPlatform([](Platform& platform) { return platform.up; })) {
    return Fail(kOutOfOrder, "KPX_Start: the platform is not initialised");
  }
  Platform& platform = ThePlatform();
  if (platform.starter.joinable()) {
    return Fail(kOutOfOrder, "KPX_Start: the platform is started already");
  }
  try {
    platform.starter = std::thread(FinishStart, finished);
  } catch (const std::system_error& error) {
    return Fail(kNoThread, std::string("KPX_Start: no thread for the start: ") + error.what());
  }
  return kNone;
}

std::int32_t KPX_PreUnInit() {
  return kNone;
}

std::int32_t KPX_Stop() {
  Platform& platform = ThePlatform();
  if (!platform.starter.joinable()) {
    return Fail(kOutOfOrder, "KPX_Stop: the platform is not started");
  }
  platform.starter.join();
  return kNone;
}

std::int32_t KPX_UnInit() {
  const bool wasUp = WithPlatform([](Platform& platform) {
    const bool up = platform.up;
    platform.up = false;  // the record is kept: the host still reads it
    return up;
  });
  return wasUp ? kNone : Fail(kOutOfOrder, "KPX_UnInit: the platform is not initialised");
}

std::int32_t KPX_GetLastError(char* text, std::int32_t size) {
  return WithPlatform([&](Platform& platform) -> std::int32_t {
    CopyText(platform.errorText, text, size);
    return platform.errorCode;
  });
}

std::int32_t KPX_GetVersion(char* text, std::int32_t size) {
  CopyText(kVersion, text, size);
  return static_cast<std::int32_t>(sizeof(kVersion) - 1);
}

void KPX_SetAddonAndToolModel(const std::vector<AddonModel>& addons,
                              const std::vector<ToolModel>& tools) {
  WithPlatform([&](Platform& platform) {
    platform.record.addons = addons;
    platform.record.tools = tools;
  });
}

void KPX_GetInstalledAddonModel(std::vector<AddonModel>& installed) {
  WithPlatform([&](Platform& platform) {
    if (!platform.record.addons) return;
    for (const AddonModel& addon : *platform.record.addons) {
      if (addon.Installed && addon.InstalledCompatible) installed.push_back(addon);
    }
  });
}

std::int32_t KPX_GetRunningModule() {
  return WithPlatform([](Platform& platform) { return platform.runningModule; });
}

std::int32_t KPX_SetProductModel(const ProductModel& model) {
  WithPlatform([&](Platform& platform) { platform.record.productModel = model; });
  return 1;
}

void AddPluginsInfo(const PluginInfoMap& plugins) {
  WithPlatform([&](Platform& platform) {
    auto& known = platform.record.plugins.emplace();
    for (const auto& plugin : plugins) known.emplace(plugin.first, *plugin.second);
  });
}

void UpdatePluginsLoadState(const std::map<std::string, bool>& started) {
  WithPlatform([&](Platform& platform) {
    platform.record.loadState = started;
    if (!platform.record.plugins) return;
    for (auto& plugin : *platform.record.plugins) {
      const auto state = started.find(plugin.first);
      plugin.second.SetVal_is_load(state != started.end() && state->second);
    }
  });
}

void pluginTakeTimeCountPrint(const std::string& text, std::int32_t milliseconds) {
  WithPlatform([&](Platform& platform) { platform.record.timing.push_back({text, milliseconds}); });
}

PlatformRecord SnapshotPlatform() {
  return WithPlatform([](Platform& platform) { return platform.record; });
}

std::optional<bool> StartCallbackResult() {
  return WithPlatform([](Platform& platform) { return platform.record.callbackResult; });
}

void SetStartObserver(std::function<void()> observer) {
  Platform& platform = ThePlatform();
  const std::lock_guard<std::mutex> lock(platform.observerMutex);
  platform.startObserver = std::move(observer);
}

void SetRunningModule(std::int32_t module) {
  WithPlatform([&](Platform& platform) { platform.runningModule = module; });
}
