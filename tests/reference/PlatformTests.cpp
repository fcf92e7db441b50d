#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "reference/base/Log.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"
#include "tests/support/Latch.h"
#include "tests/support/TimeLimit.h"

namespace {

using testing::ElementsAre;

std::thread::id g_callbackThread;

bool Succeed(StartedPluginMap* started) {
  g_callbackThread = std::this_thread::get_id();
  started->emplace("a", nullptr);
  return true;
}

bool Throw(StartedPluginMap*) {
  throw std::runtime_error("callback");
}

bool ThrowNoException(StartedPluginMap*) {
  throw 42;
}

/// What the test and a running start callback share.
struct Meeting {
  Latch begun;
  Latch mayEnd;
  std::int32_t module = 0;
  std::string installed;
};
Meeting* g_meeting = nullptr;

/// A start callback that calls the platform's functions and then waits for the test.
bool AskAndWait(StartedPluginMap*) {
  g_meeting->module = KPX_GetRunningModule();
  std::vector<AddonModel> installed;
  KPX_GetInstalledAddonModel(installed);
  for (const AddonModel& addon : installed) g_meeting->installed += addon.ID;
  UpdatePluginsLoadState({{"a", true}});
  pluginTakeTimeCountPrint("asked", 7);
  g_meeting->begun.Arrive();
  return g_meeting->mayEnd.Wait();
}

bool FailTheStart(StartedPluginMap*) {
  return false;
}

class Platform : public testing::Test {
 protected:
  Platform() { EXPECT_EQ(0, KPX_Init()); }
  ~Platform() override { KPX_UnInit(); }

  /// "code: text"
  static std::string LastError() {
    char text[256];
    const std::int32_t code = KPX_GetLastError(text, sizeof(text));
    return std::to_string(code) + ": " + text;
  }

  /// Starts and stops the platform. Returns the log's lines, as "LEVEL MODULE TEXT".
  static std::vector<std::string> LinesOfAStart(KPXStartFinishFn callback) {
    std::vector<std::string> lines;
    SetLogObserver([&lines](int level, const std::string& module, const std::string& text) {
      lines.push_back(std::to_string(level) + " " + module + " " + text);
    });
    KPX_Start(callback);
    KPX_Stop();
    SetLogObserver({});
    return lines;
  }
};

TEST_F(Platform, CallsBackOnAThreadOfItsOwnAndKeepsTheHandles) {
  EXPECT_EQ(0, KPX_Start(&Succeed));
  EXPECT_EQ(0, KPX_Stop());
  EXPECT_NE(std::this_thread::get_id(), g_callbackThread);
  EXPECT_EQ(true, SnapshotPlatform().callbackResult);
  EXPECT_THAT(SnapshotPlatform().handles, ElementsAre("a"));
}

TEST_F(Platform, RefusesCallsOutOfOrderAndSaysWhy) {
  EXPECT_NE(0, KPX_Init());
  EXPECT_EQ("1: KPX_Init: the platform is up already", LastError());
  EXPECT_NE(0, KPX_Start(nullptr));
  EXPECT_EQ("2: KPX_Start: no start callback was given", LastError());
  EXPECT_NE(0, KPX_Stop());
  EXPECT_EQ(0, KPX_Start(&Succeed));
  EXPECT_NE(0, KPX_Start(&Succeed));
  KPX_Stop();
}

TEST_F(Platform, ACallbackThatThrowsCountsAsFailed) {
  EXPECT_THAT(LinesOfAStart(&Throw),
              ElementsAre("5 platform.Reference the start callback threw: callback",
                          "5 platform.Reference the start callback did not succeed"));
  EXPECT_EQ(false, SnapshotPlatform().callbackResult);
  EXPECT_EQ("4: the start callback did not succeed", LastError());
}

TEST_F(Platform, ACallbackThatThrowsNoExceptionObjectCountsAsFailed) {
  EXPECT_THAT(LinesOfAStart(&ThrowNoException),
              ElementsAre("5 platform.Reference the start callback threw something that is no "
                          "exception object",
                          "5 platform.Reference the start callback did not succeed"));
  EXPECT_EQ(false, SnapshotPlatform().callbackResult);
  EXPECT_EQ("4: the start callback did not succeed", LastError());
}

TEST_F(Platform, IsAskedFromTheCallbackAndFromTheHostWhileTheCallbackRuns) {
  Meeting meeting;
  g_meeting = &meeting;
  AddonModel addon;
  addon.ID = "both";
  addon.Installed = addon.InstalledCompatible = true;
  KPX_SetAddonAndToolModel({addon}, {});
  ASSERT_EQ(0, KPX_Start(&AskAndWait));
  EXPECT_TRUE(meeting.begun.Wait());
  EXPECT_EQ(1, meeting.module);
  EXPECT_EQ("both", meeting.installed);
  EXPECT_EQ(std::nullopt, StartCallbackResult());
  const std::vector<TimingLine> timing = SnapshotPlatform().timing;
  ASSERT_EQ(1U, timing.size());
  EXPECT_EQ("asked 7", timing[0].text + " " + std::to_string(timing[0].milliseconds));
  meeting.mayEnd.Arrive();
  EXPECT_EQ(0, KPX_Stop());
  EXPECT_EQ(true, StartCallbackResult());
}

TEST_F(Platform, FailedStartIsNeverSeenWithoutItsReason) {
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(0, KPX_Start(&FailTheStart));
    AwaitThat("the start callback does not end", [] { return StartCallbackResult().has_value(); });
    ASSERT_EQ("4: the start callback did not succeed", LastError()) << i;
    KPX_Stop();
    KPX_UnInit();
    KPX_Init();
  }
}

TEST_F(Platform, ItsStartObserverIsCalledOnceItsResultIsThere) {
  std::vector<std::optional<bool>> seen;
  SetStartObserver([&seen] { seen.push_back(StartCallbackResult()); });
  KPX_Start(&Succeed);
  KPX_Stop();
  KPX_Start(&Throw);
  KPX_Stop();
  SetStartObserver([] { throw std::runtime_error("observer"); });
  KPX_Start(&Succeed);
  KPX_Stop();
  SetStartObserver({});
  EXPECT_EQ((std::vector<std::optional<bool>>{true, false}), seen);
}

TEST_F(Platform, RefusesToStartAndToEndWhenItIsNotInitialised) {
  EXPECT_EQ(0, KPX_UnInit());
  EXPECT_NE(0, KPX_Start(&Succeed));
  EXPECT_EQ("1: KPX_Start: the platform is not initialised", LastError());
  EXPECT_EQ(std::nullopt, StartCallbackResult());
  EXPECT_NE(0, KPX_UnInit());
  EXPECT_EQ("1: KPX_UnInit: the platform is not initialised", LastError());
}

TEST_F(Platform, StartsAgainAfterAStop) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(0, KPX_Start(&Succeed));
    EXPECT_EQ(0, KPX_PreUnInit());
    EXPECT_EQ(0, KPX_Stop());
  }
  EXPECT_EQ(true, StartCallbackResult());
}

TEST_F(Platform, NewInitHasNoError) {
  EXPECT_NE(0, KPX_Start(nullptr));
  KPX_UnInit();
  KPX_Init();
  char text[8] = "before";
  EXPECT_EQ(0, KPX_GetLastError(text, sizeof(text)));
  EXPECT_STREQ("", text);
}

TEST_F(Platform, WhatItWasNeverHandedHasNoValue) {
  const PlatformRecord record = SnapshotPlatform();
  EXPECT_FALSE(record.productModel || record.addons || record.tools || record.plugins ||
               record.loadState || record.callbackResult);
  std::vector<AddonModel> installed;
  KPX_GetInstalledAddonModel(installed);
  EXPECT_TRUE(installed.empty());
}

TEST_F(Platform, ReportsAsInstalledTheAddonsThatAreAndAreCompatible) {
  std::vector<AddonModel> addons(4);
  addons[0].ID = "neither";
  addons[1].ID = "installed";
  addons[1].Installed = true;
  addons[2].ID = "both";
  addons[2].Installed = addons[2].InstalledCompatible = true;
  addons[3].ID = "compatible";
  addons[3].InstalledCompatible = true;
  KPX_SetAddonAndToolModel(addons, {});
  std::vector<AddonModel> installed;
  KPX_GetInstalledAddonModel(installed);
  ASSERT_EQ(1U, installed.size());
  EXPECT_EQ("both", installed[0].ID);
}

TEST_F(Platform, ItsRecordStaysUntilItIsInitialisedAgain) {
  ProductModel model;
  model.Product = "P";
  EXPECT_NE(0, KPX_SetProductModel(model));
  KPX_UnInit();
  EXPECT_EQ("P", SnapshotPlatform().productModel->Product);
  KPX_Init();
  EXPECT_FALSE(SnapshotPlatform().productModel.has_value());
}

TEST_F(Platform, ItsVersionIsThatOfTheProject) {
  char text[32] = {};
  KPX_GetVersion(text, sizeof(text));
  EXPECT_STREQ(TEV_VERSION, text);
}

TEST_F(Platform, BufferOfANegativeSizeIsLeftAsItIs) {
  char text[] = "x";
  EXPECT_EQ(static_cast<std::int32_t>(std::strlen(TEV_VERSION)), KPX_GetVersion(text, -1));
  EXPECT_STREQ("x", text);
}

TEST_F(Platform, ItsRunningModuleIsTheHosts) {
  EXPECT_EQ(1, KPX_GetRunningModule());
  SetRunningModule(2);
  EXPECT_EQ(2, KPX_GetRunningModule());
  SetRunningModule(1);
}

TEST_F(Platform, PluginsThatStartedAreMarkedAsLoaded) {
  PluginInfoMap infos;
  infos["a"] = std::make_shared<CPluginInfo>();
  infos["b"] = std::make_shared<CPluginInfo>();
  AddPluginsInfo(infos);
  UpdatePluginsLoadState({{"a", true}});
  EXPECT_TRUE(SnapshotPlatform().plugins->at("a").is_load());
  EXPECT_FALSE(SnapshotPlatform().plugins->at("b").is_load());
}

TEST(LpcFrame, KeepsWhatItReceivesAndRefusesCallsOutOfOrder) {
  PlatformInfo info;
  info.Edition = "E";
  EXPECT_NE(0, TevLPCFrameUnInit());
  EXPECT_NE(0, TevLPCFrameInit("", info));
  EXPECT_EQ(0, TevLPCFrameInit("name", info));
  EXPECT_NE(0, TevLPCFrameInit("name", info));
  EXPECT_TRUE(SnapshotLpc().up);
  TevLPCFrameNotifyStartPlugins("");
  EXPECT_EQ(0, TevLPCFrameUnInit());
  EXPECT_EQ("name E", SnapshotLpc().name + " " + SnapshotLpc().info->Edition);
  EXPECT_THAT(SnapshotLpc().notified, ElementsAre(""));
  EXPECT_FALSE(SnapshotLpc().up);
}

TEST(LpcFrame, ForgetsItsLastRunAtTheNext) {
  PlatformInfo info;
  ASSERT_EQ(0, TevLPCFrameInit("first", info));
  TevLPCFrameNotifyStartPlugins("text");
  ASSERT_EQ(0, TevLPCFrameUnInit());
  ASSERT_EQ(0, TevLPCFrameInit("second", info));
  EXPECT_EQ("second", SnapshotLpc().name);
  EXPECT_THAT(SnapshotLpc().notified, ElementsAre());
  EXPECT_EQ(0, TevLPCFrameUnInit());
}

}  // namespace
