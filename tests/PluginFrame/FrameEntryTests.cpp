#include "sdk/frame/PluginFrame.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "tests/support/FrameTest.h"

using testing::_;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Invoke;
using testing::Return;

// The exported entries lie in the frame's own namespace, unmangled.
namespace {

class FrameEntries : public FrameEntriesTest {
 protected:
  /// The platform's start takes so many milliseconds and then waits for its callback.
  void CallBackAtOnce(std::uint64_t milliseconds = 0) {
    ON_CALL(seam.platform, Start).WillByDefault(Invoke([=](KPXStartFinishFn finished) {
      seam.now += milliseconds;
      callbackResult = Seam::CallBack(finished, &started);
      return 0;
    }));
  }

  StartedPluginMap started;
  bool callbackResult = false;
};

TEST_F(FrameEntries, InitLogsItsStepsAndCosts) {
  tree.Product("a:");
  EXPECT_CALL(seam.platform, Init).WillOnce(Invoke([this] {
    seam.now += 3;
    return 0;
  }));
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(Invoke([this](const ProductModel&) {
    seam.now += 40;
    return 1;
  }));
  EXPECT_EQ(0, Frame_Init());
  EXPECT_THAT(
      log.Brief("Frame_Init"),
      ElementsAre("3 Frame_Init: [Frame_Init]----KPX_Init end, cost time [3]ms.----",
                  "3 Frame_Init: [Frame_Init]----PluginManager Init begin----",
                  "3 Frame_Init: [Frame_Init]----PluginManager Init end, cost time [40]ms.----",
                  "3 Frame_Init: [1.Init]----!Frame_Init end.success! cost time [43]ms.----"));
}

TEST_F(FrameEntries, PlatformThatFailsToInitialiseFailsInitAtOnce) {
  EXPECT_CALL(seam.platform, Init).WillOnce(Return(5));
  EXPECT_CALL(seam.platform, UnInit).Times(0);
  EXPECT_EQ(-1, Frame_Init());
  EXPECT_THAT(log.Brief(),
              ElementsAre("6 Frame_Init: [Frame_Init]----KPX_Init failed! Quit HUB.exe----"));
  EXPECT_THAT(seam.Calls(), ElementsAre("KPX_Init"));
}

TEST_F(FrameEntries, ManagerThatFailsUninitialisesThePlatform) {
  EXPECT_CALL(seam.platform, UnInit).Times(1);
  EXPECT_EQ(-1, Frame_Init());
  EXPECT_THAT(
      log.Brief("Frame_Init"),
      ElementsAre("3 Frame_Init: [Frame_Init]----KPX_Init end, cost time [0]ms.----",
                  "3 Frame_Init: [Frame_Init]----PluginManager Init begin----",
                  "3 Frame_Init: [Frame_Init]----PluginManager Init failed, KPX_UnInit begin----",
                  "3 Frame_Init: [Frame_Init]----KPX_UnInit end----",
                  "6 Frame_Init: [Frame_Init]----PluginManager Init failed! Quit HUB.exe----"));
}

TEST_F(FrameEntries, InitFailsWhenTheManagerThrows) {
  tree.Product("a:");
  EXPECT_CALL(seam.platform, SetProductModel).WillOnce(testing::Throw(std::bad_alloc()));
  EXPECT_CALL(seam.platform, UnInit).Times(1);
  EXPECT_EQ(-1, Frame_Init());
  EXPECT_THAT(log.BriefFrom(6),
              ElementsAre("6 Frame_Init: [Frame_Init]----PluginManager Init failed! Quit "
                          "HUB.exe----"));
}

TEST_F(FrameEntries, StartReturnsThePlatformsResult) {
  EXPECT_CALL(seam.platform, Start(testing::NotNull())).WillOnce(Return(-77));
  EXPECT_EQ(-77, Frame_Start());
  EXPECT_THAT(log.Brief(), ElementsAre("3 Frame_Start: [2.Start]----!Frame_Start begin!----",
                                       "3 Frame_Start: [Frame_Start]----KPX_Start begin, call "
                                       "KPXStartFinishCallBack begin----",
                                       "3 Frame_Start: [2.Start]----!Frame_Start end!----"));
}

TEST_F(FrameEntries, CallbackTimesThePlatformAndStartsThePlugins) {
  tree.Product("a:");
  seam.libraries["a"].init = [this] {
    seam.now += 20;
    return true;
  };
  ASSERT_EQ(0, Frame_Init());
  CallBackAtOnce(12);
  EXPECT_CALL(seam.platform, TakeTime(_, _)).Times(testing::AnyNumber());
  EXPECT_CALL(seam.platform, TakeTime("KPX_Start OK", 12));
  EXPECT_EQ(0, Frame_Start());
  EXPECT_TRUE(callbackResult);
  EXPECT_EQ(1U, started.count("a"));
  EXPECT_THAT(
      log.Brief("KPXStartFinishCallBack"),
      ElementsAre("3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----KPX_Start end. cost time "
                  "[12]ms compare 30s.",
                  "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----PluginManager start "
                  "begin----",
                  "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----PluginManager start end. "
                  "cost time [220]ms.----",
                  "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----HUB exec "
                  "KPXStartFinishCallBack end----"));
}

TEST_F(FrameEntries, CallbackReturnsTheManagersFailure) {
  tree.Product("a:");
  ASSERT_EQ(0, Frame_Init());
  CallBackAtOnce();
  callbackResult = true;
  EXPECT_CALL(seam.threads, Grant).WillOnce(Return(0U));
  Frame_Start();
  EXPECT_FALSE(callbackResult);
}

TEST_F(FrameEntries, CallbackFailsWhenTheManagerThrows) {
  tree.Product("a:");
  ASSERT_EQ(0, Frame_Init());
  CallBackAtOnce();
  callbackResult = true;
  EXPECT_CALL(seam.threads, Grant).WillOnce(testing::Throw(std::runtime_error("no")));
  EXPECT_EQ(0, Frame_Start());
  EXPECT_FALSE(callbackResult);
}

TEST_F(FrameEntries, PlatformThatThrowsFailsInitAndIsNotUninitialised) {
  tree.Product("a:");
  EXPECT_CALL(seam.platform, Init).WillOnce(testing::Throw(std::runtime_error("no disk")));
  EXPECT_EQ(-1, Frame_Init());
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("5 Frame_Init: the step ended with an exception [no disk]",
                          "6 Frame_Init: [Frame_Init]----KPX_Init failed! Quit HUB.exe----"));
  EXPECT_THAT(seam.Calls(), ElementsAre("KPX_Init"));
}

TEST_F(FrameEntries, FailedInitFailsAlsoWhenThePlatformsUnInitThrows) {
  EXPECT_CALL(seam.platform, UnInit).WillOnce(testing::Throw(7));
  EXPECT_EQ(-1, Frame_Init());
  EXPECT_THAT(log.BriefFrom(5),
              testing::Contains("5 Frame_Init: the step ended with an unknown exception"));
}

TEST_F(FrameEntries, StartFailsWhenThePlatformThrows) {
  EXPECT_CALL(seam.platform, Start).WillOnce(testing::Throw(std::runtime_error("no threads")));
  EXPECT_EQ(-1, Frame_Start());
  EXPECT_THAT(log.Brief().back(), "3 Frame_Start: [2.Start]----!Frame_Start end!----");
}

TEST_F(FrameEntries, StopAndUnInitDoEachStepWhateverTheStepsThrow) {
  EXPECT_CALL(seam.platform, PreUnInit).WillOnce(testing::Throw(std::runtime_error("first")));
  EXPECT_CALL(seam.lpc, UnInit).WillOnce(testing::Throw(std::runtime_error("second")));
  EXPECT_CALL(seam.platform, Stop).WillOnce(testing::Throw(std::runtime_error("third")));
  EXPECT_CALL(seam.platform, UnInit).WillOnce(testing::Throw(std::runtime_error("fourth")));
  Frame_Stop();
  Frame_UnInit();
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("5 Frame_Stop: the step ended with an exception [first]",
                          "5 Frame_Stop: the step ended with an exception [second]",
                          "5 Frame_Stop: the step ended with an exception [third]",
                          "5 Frame_UnInit: the step ended with an exception [fourth]"));
}

std::vector<std::string> StopLines(int first) {
  const auto step = [first](int offset) { return std::to_string(first + offset); };
  return {
      "3 Frame_Stop: [3.Stop]----!Frame_Stop begin!----",
      "3 Frame_Stop: [Frame_Stop]----[" + step(0) + "]KPXPlatform KPX_PreUnInit start----",
      "3 Frame_Stop: [Frame_Stop]----[" + step(0) +
          "]KPXPlatform KPX_PreUnInit end.cost time [1]ms----",
      "3 Frame_Stop: [Frame_Stop]----[" + step(1) + "]CPluginManager::Instance().Uninit start----",
      "3 Frame_Stop: [Frame_Stop]----[" + step(1) +
          "]CPluginManager::Instance().Uninit end.cost time [2]ms----",
      "3 Frame_Stop: [Frame_Stop]----[" + step(2) + "]KPXPlatform KPX_Stop start----",
      "3 Frame_Stop: [Frame_Stop]----[" + step(2) + "]KPXPlatform KPX_Stop end.cost time [4]ms----",
      "3 Frame_Stop: [3.Stop]----!Frame_Stop end! cost time [7]ms.----"};
}

TEST_F(FrameEntries, StopNumbersItsStepsFromOneThroughTheProcess) {
  ON_CALL(seam.platform, PreUnInit).WillByDefault(Invoke([this] {
    seam.now += 1;
    return 9;  // ignored
  }));
  ON_CALL(seam.lpc, UnInit).WillByDefault(Invoke([this] {
    seam.now += 2;
    return 0;
  }));
  ON_CALL(seam.platform, Stop).WillByDefault(Invoke([this] {
    seam.now += 4;
    return 9;
  }));
  Frame_Stop();
  const std::vector<std::string> first = log.Brief("Frame_Stop");
  Log::Instance().Clear();
  Frame_Stop();
  EXPECT_EQ(StopLines(1), first);
  EXPECT_EQ(StopLines(4), log.Brief("Frame_Stop"));
}

TEST_F(FrameEntries, UnInitTimesThePlatformsAndCallsNothingElse) {
  EXPECT_CALL(seam.platform, UnInit).WillOnce(Invoke([this] {
    seam.now += 6;
    return 1;
  }));
  Frame_UnInit();
  EXPECT_THAT(log.Brief(),
              ElementsAre("3 Frame_UnInit: [4.Uninit]----!Frame_UnInit begin!----",
                          "3 Frame_UnInit: [Frame_UnInit]----KPX_UnInit begin----",
                          "3 Frame_UnInit: [Frame_UnInit]----KPX_UnInit end, cost time [6]ms----",
                          "3 Frame_UnInit: [4.Uninit]----!Frame_UnInit end! cost time [6]ms----"));
  EXPECT_THAT(seam.Calls(), ElementsAre("KPX_UnInit"));
}

TEST_F(FrameEntries, GtestReturnsZeroAndLogsNothing) {
  int anything = 0;
  EXPECT_EQ(0, Frame_Gtest(0, nullptr));
  EXPECT_EQ(0, Frame_Gtest(-5, &anything));
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(FrameEntries, LastErrorAndVersionForwardArgumentsAndResults) {
  char text[8] = {};
  EXPECT_CALL(seam.platform, GetLastError(text, 8)).WillOnce(Return(31));
  EXPECT_CALL(seam.platform, GetVersion(text, 7)).WillOnce(Return(32));
  EXPECT_EQ(31, Frame_GetLastError(text, 8));
  EXPECT_EQ(32, Frame_GetVersion(text, 7));
  EXPECT_THAT(log.Brief(), ElementsAre());
}

TEST_F(FrameEntries, LastErrorAndVersionFailWhenThePlatformThrows) {
  EXPECT_CALL(seam.platform, GetLastError).WillOnce(testing::Throw(std::runtime_error("no text")));
  EXPECT_CALL(seam.platform, GetVersion).WillOnce(testing::Throw(7));
  EXPECT_EQ(-1, Frame_GetLastError(nullptr, 0));
  EXPECT_EQ(-1, Frame_GetVersion(nullptr, 0));
  EXPECT_THAT(log.Brief(),
              ElementsAre("5 Frame_GetLastError: the step ended with an exception [no text]",
                          "5 Frame_GetVersion: the step ended with an unknown exception"));
}

TEST_F(FrameEntries, TimingRowThatThrowsDoesNotFailTheCallback) {
  tree.Product("a:");
  seam.libraries["a"];
  ASSERT_EQ(0, Frame_Init());
  CallBackAtOnce();
  EXPECT_CALL(seam.platform, TakeTime).Times(testing::AnyNumber());
  EXPECT_CALL(seam.platform, TakeTime("KPX_Start OK", testing::_)).WillOnce(testing::Throw(7));
  Log::Instance().Clear();
  EXPECT_EQ(0, Frame_Start());
  EXPECT_TRUE(callbackResult);
  EXPECT_THAT(log.BriefFrom(4),
              ElementsAre("4 KPXStartFinishCallBack: a row of the timing table is lost"));
}

/// The course of a run without the lines of the functions that read the product.
std::vector<std::string> CourseWithoutReading(const Log& log) {
  std::vector<std::string> course = log.Course();
  const auto isOfReading = [](const std::string& entry) {
    return entry.compare(1, 5, " Read") == 0;
  };
  course.erase(std::remove_if(course.begin(), course.end(), isOfReading), course.end());
  return course;
}

TEST_F(FrameEntries, WholeRunCallsAndLogsInThisOrder) {
  tree.Product("a:");
  seam.libraries["a"];
  CallBackAtOnce();
  Frame_Init();
  Frame_Start();
  Frame_Stop();
  Frame_UnInit();
  const std::string file = tree.ExeDirectory() + "a.dll";
  const std::vector<std::string> course = {
      "KPX_Init",
      "3 Frame_Init: [Frame_Init]----KPX_Init end, cost time [0]ms.----",
      "3 Frame_Init: [Frame_Init]----PluginManager Init begin----",
      "3 Init: [PluginManager Init]----PluginManager Init start----",
      "4 Init: [PluginManager Init]----ReadServerAddonsModel failed.Get product addons model "
      "param failed----",
      "4 Init: [PluginManager Init]----ReadServerToolsModel failed.Get product tools model "
      "param failed----",
      "KPX_SetAddonAndToolModel",
      "3 Init: [PluginManager Init]Set Addons and Tools Model to platform.",
      "KPX_GetInstalledAddonModel",
      "3 Init: [PluginManager Init]Get signed & compatibled verify and installed addons size "
      "[0].",
      "KPX_GetRunningModule",
      "KPX_SetProductModel",
      "3 Init: [PluginManager Init]Set product model param to platform success.",
      "3 Init: [PluginManager Init]Plugins' version: [a:1.0;]",
      "3 Init: [PluginManager Init]Drivers' version: []",
      "3 Init: [PluginManager Init]Switch Product Model to LPC frame info.",
      "TevLPCFrameInit",
      "3 Init: [PluginManager Init]TevLPCFrameInit success.",
      "AddPluginsInfo",
      "3 Init: [PluginManager Init]Set plugin info to platform success.",
      "3 Init: [PluginManager Init]----PluginManager Init success----",
      "3 Frame_Init: [Frame_Init]----PluginManager Init end, cost time [0]ms.----",
      "3 Frame_Init: [1.Init]----!Frame_Init end.success! cost time [0]ms.----",
      "3 Frame_Start: [2.Start]----!Frame_Start begin!----",
      "3 Frame_Start: [Frame_Start]----KPX_Start begin, call KPXStartFinishCallBack begin----",
      "KPX_Start",
      "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----KPX_Start end. cost time [0]ms "
      "compare 30s.",
      "timing row [KPX_Start OK]",
      "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----PluginManager start begin----",
      "3 Start: [PluginManager start]----PluginManager start----",
      "GetAvailableThreadpool",
      "timing row [Plugins need to init:\n[a] ]",
      "3 Start: [PluginManager start]Plugins init start...",
      "PostTask",
      "XRT_Sleep",
      "3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad Begin.",
      "3 Load: [Plugin]start frame plugin Being path= [" + file + "]",
      "LoadLibraryW",
      "3 Load: [Plugin]start frame plugin end success.path= [" + file + "]",
      "3 SinglePluginLoad: [Plugin Load]Plugin Init begin.[a]",
      "GetProcAddress Init",
      "timing row [[a] Init OK]",
      "3 SinglePluginLoad: [Plugin Load]Plugin Init end. [a] cost time [0]ms",
      "3 SinglePluginLoad: [Plugin Load]Plugin [a] SinglePluginLoad End. count[1].",
      "ReleaseThread",
      "3 Start: [PluginManager start]Plugins init end. Total cost time [200]ms.",
      "UpdatePluginsLoadState",
      "TevLPCFrameNotifyStartPlugins",
      "3 Start: [PluginManager start]Notify plugin start by LPC.",
      "3 Start: [PluginManager start]----PluginManager Start success----",
      "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----PluginManager start end. cost "
      "time [200]ms.----",
      "3 KPXStartFinishCallBack: [KPXStartFinishCallBack]----HUB exec KPXStartFinishCallBack "
      "end----",
      "3 Frame_Start: [2.Start]----!Frame_Start end!----",
      "3 Frame_Stop: [3.Stop]----!Frame_Stop begin!----",
      "3 Frame_Stop: [Frame_Stop]----[1]KPXPlatform KPX_PreUnInit start----",
      "KPX_PreUnInit",
      "3 Frame_Stop: [Frame_Stop]----[1]KPXPlatform KPX_PreUnInit end.cost time [0]ms----",
      "3 Frame_Stop: [Frame_Stop]----[2]CPluginManager::Instance().Uninit start----",
      "3 Uninit: [PluginManager Uninit]----CPluginManager::Uninit start.----",
      "3 Uninit: [PluginManager Uninit]Uninit lpc frame start.",
      "TevLPCFrameUnInit",
      "3 Uninit: [PluginManager Uninit]Uninit lpc frame end, success.",
      "3 Uninit: [PluginManager Uninit]Get threads for uninit plugins start.",
      "GetAvailableThreadpool",
      "3 Uninit: [PluginManager Uninit]Get threads for uninit plugins end, success(threads "
      "num = 1). ",
      "3 Uninit: [PluginManager Uninit]Uninit all plugins start.",
      "PostTask",
      "XRT_Sleep",
      "3 SinglePluginUnload: [Plugin Unload]Plugin [a] SinglePluginUnload Begin.",
      "3 SinglePluginUnload: [Plugin Unload]Plugin UnInit begin.[a]",
      "GetProcAddress UnInit",
      "3 SinglePluginUnload: [Plugin Unload]Plugin UnInit end. [a] cost time [0] ms.",
      "3 ~CPlugin: [Plugin]FreeLibrary Begin",
      "FreeLibrary",
      "3 ~CPlugin: [Plugin]FreeLibrary End",
      "3 SinglePluginUnload: [Plugin Unload]Plugin [a] SinglePluginUnload End. count[1].",
      "ReleaseThread",
      "3 Uninit: [PluginManager Uninit]]Uninit all plugins end.cost time [200]ms.",
      "3 Uninit: [PluginManager Uninit]CPluginManager::Uninit end.",
      "3 Frame_Stop: [Frame_Stop]----[2]CPluginManager::Instance().Uninit end.cost time "
      "[200]ms----",
      "3 Frame_Stop: [Frame_Stop]----[3]KPXPlatform KPX_Stop start----",
      "KPX_Stop",
      "3 Frame_Stop: [Frame_Stop]----[3]KPXPlatform KPX_Stop end.cost time [0]ms----",
      "3 Frame_Stop: [3.Stop]----!Frame_Stop end! cost time [200]ms.----",
      "3 Frame_UnInit: [4.Uninit]----!Frame_UnInit begin!----",
      "3 Frame_UnInit: [Frame_UnInit]----KPX_UnInit begin----",
      "KPX_UnInit",
      "3 Frame_UnInit: [Frame_UnInit]----KPX_UnInit end, cost time [0]ms----",
      "3 Frame_UnInit: [4.Uninit]----!Frame_UnInit end! cost time [0]ms----"};
  EXPECT_THAT(CourseWithoutReading(log), ElementsAreArray(course));
}

}  // namespace
