// The exported entries and the platform's start callback. They call the platform and the plugin
// manager in a fixed order and log each step with its duration.

#include "sdk/frame/PluginFrame.h"

#include <atomic>
#include <cstdint>
#include <exception>
#include <utility>

#include "sdk/kpx/platform.h"
#include "sdk/os/os.h"
#include "src/PluginFrame/PluginManager.h"
#include "src/PluginFrame/TimingTable.h"
#include "src/private/FrameLog.h"

namespace PluginFrame {

namespace {

// When Frame_Start called the platform, for the callback.
std::atomic<ULONGLONG> g_startTick{0};

// The number of the next step of Frame_Stop in the log. Never reset.
std::atomic<std::int32_t> g_stopStep{1};

/// Calls `work` and logs what it throws: no exception may cross the C boundary.
template <typename Work>
void CatchAll(const char* kLogFunction, Work work) {
  try {
    work();
  } catch (const std::exception& error) {
    FRAME_LOG(kFailure, "the step ended with an exception [%s]", error.what());
  } catch (...) {
    FRAME_LOG(kFailure, "the step ended with an unknown exception");
  }
}

/// The same; returns what `work` returns, or `onThrow` when it throws.
template <typename Result, typename Work>
Result CatchAll(const char* kLogFunction, Result onThrow, Work work) {
  Result result = onThrow;
  CatchAll(kLogFunction, [&] { result = work(); });
  return result;
}

bool KPXStartFinishCallBack(StartedPluginMap* started) {
  FRAME_LOG_AS("PluginFrame::KPXStartFinishCallBack");
  const ULONGLONG begin = GetTickCount64();
  const std::int32_t platformCost = Elapsed(g_startTick, begin);
  FRAME_LOG(kProgress, "[KPXStartFinishCallBack]----KPX_Start end. cost time [%d]ms compare 30s.",
            platformCost);
  if (!AddTimingRow([] { return "KPX_Start OK"; }, platformCost)) {
    FRAME_LOG(kTolerated, "%s", kRowIsLost);
  }
  const bool result = CatchAll(kLogFunction, false, [&] {
    FRAME_LOG(kProgress, "[KPXStartFinishCallBack]----PluginManager start begin----");
    return CPluginManager::Instance().Start(started);
  });
  FRAME_LOG(kProgress, "[KPXStartFinishCallBack]----PluginManager start end. cost time [%d]ms.----",
            Elapsed(begin, GetTickCount64()));
  FRAME_LOG(kProgress, "[KPXStartFinishCallBack]----HUB exec KPXStartFinishCallBack end----");
  return result;
}

}  // namespace

extern "C" {

std::int32_t Frame_Init() {
  FRAME_LOG_AS("PluginFrame::Frame_Init");
  const ULONGLONG begin = GetTickCount64();
  if (CatchAll(kLogFunction, -1, &KPX_Init) != 0) {
    FRAME_LOG(kFatal, "[Frame_Init]----KPX_Init failed! Quit HUB.exe----");
    return -1;
  }
  const ULONGLONG platformUp = GetTickCount64();
  FRAME_LOG(kProgress, "[Frame_Init]----KPX_Init end, cost time [%d]ms.----",
            Elapsed(begin, platformUp));
  FRAME_LOG(kProgress, "[Frame_Init]----PluginManager Init begin----");
  if (!CatchAll(kLogFunction, false, [] { return CPluginManager::Instance().Init(); })) {
    FRAME_LOG(kProgress, "[Frame_Init]----PluginManager Init failed, KPX_UnInit begin----");
    CatchAll(kLogFunction, &KPX_UnInit);
    FRAME_LOG(kProgress, "[Frame_Init]----KPX_UnInit end----");
    FRAME_LOG(kFatal, "[Frame_Init]----PluginManager Init failed! Quit HUB.exe----");
    return -1;
  }
  const ULONGLONG end = GetTickCount64();
  FRAME_LOG(kProgress, "[Frame_Init]----PluginManager Init end, cost time [%d]ms.----",
            Elapsed(platformUp, end));
  FRAME_LOG(kProgress, "[1.Init]----!Frame_Init end.success! cost time [%d]ms.----",
            Elapsed(begin, end));
  return 0;
}

std::int32_t Frame_Start() {
  FRAME_LOG_AS("PluginFrame::Frame_Start");
  FRAME_LOG(kProgress, "[2.Start]----!Frame_Start begin!----");
  FRAME_LOG(kProgress, "[Frame_Start]----KPX_Start begin, call KPXStartFinishCallBack begin----");
  g_startTick = GetTickCount64();
  const std::int32_t result =
      CatchAll(kLogFunction, -1, [] { return KPX_Start(&KPXStartFinishCallBack); });
  FRAME_LOG(kProgress, "[2.Start]----!Frame_Start end!----");
  return result;
}

void Frame_Stop() {
  FRAME_LOG_AS("PluginFrame::Frame_Stop");
  FRAME_LOG(kProgress, "[3.Stop]----!Frame_Stop begin!----");
  const ULONGLONG begin = GetTickCount64();

  FRAME_LOG(kProgress, "[Frame_Stop]----[%d]KPXPlatform KPX_PreUnInit start----",
            g_stopStep.load());
  CatchAll(kLogFunction, &KPX_PreUnInit);
  const ULONGLONG prepared = GetTickCount64();
  FRAME_LOG(kProgress, "[Frame_Stop]----[%d]KPXPlatform KPX_PreUnInit end.cost time [%d]ms----",
            g_stopStep++, Elapsed(begin, prepared));

  FRAME_LOG(kProgress, "[Frame_Stop]----[%d]CPluginManager::Instance().Uninit start----",
            g_stopStep.load());
  CatchAll(kLogFunction, [] { CPluginManager::Instance().Uninit(); });
  const ULONGLONG pluginsStopped = GetTickCount64();
  FRAME_LOG(kProgress,
            "[Frame_Stop]----[%d]CPluginManager::Instance().Uninit end.cost time [%d]ms----",
            g_stopStep++, Elapsed(prepared, pluginsStopped));

  FRAME_LOG(kProgress, "[Frame_Stop]----[%d]KPXPlatform KPX_Stop start----", g_stopStep.load());
  CatchAll(kLogFunction, &KPX_Stop);
  const ULONGLONG end = GetTickCount64();
  FRAME_LOG(kProgress, "[Frame_Stop]----[%d]KPXPlatform KPX_Stop end.cost time [%d]ms----",
            g_stopStep++, Elapsed(pluginsStopped, end));
  FRAME_LOG(kProgress, "[3.Stop]----!Frame_Stop end! cost time [%d]ms.----", Elapsed(begin, end));
}

void Frame_UnInit() {
  FRAME_LOG_AS("PluginFrame::Frame_UnInit");
  FRAME_LOG(kProgress, "[4.Uninit]----!Frame_UnInit begin!----");
  const ULONGLONG begin = GetTickCount64();
  FRAME_LOG(kProgress, "[Frame_UnInit]----KPX_UnInit begin----");
  CatchAll(kLogFunction, &KPX_UnInit);
  const std::int32_t cost = Elapsed(begin, GetTickCount64());
  FRAME_LOG(kProgress, "[Frame_UnInit]----KPX_UnInit end, cost time [%d]ms----", cost);
  FRAME_LOG(kProgress, "[4.Uninit]----!Frame_UnInit end! cost time [%d]ms----", cost);
}

std::int32_t Frame_GetLastError(char* text, std::int32_t size) {
  FRAME_LOG_AS("PluginFrame::Frame_GetLastError");
  return CatchAll(kLogFunction, -1, [=] { return KPX_GetLastError(text, size); });
}

std::int32_t Frame_GetVersion(char* text, std::int32_t size) {
  FRAME_LOG_AS("PluginFrame::Frame_GetVersion");
  return CatchAll(kLogFunction, -1, [=] { return KPX_GetVersion(text, size); });
}

std::int32_t Frame_Gtest(std::int32_t, void*) {
  return 0;
}

}  // extern "C"

}  // namespace PluginFrame
