#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sdk/kpx/platform.h"
#include "tests/contract/Subject.h"
#include "tests/support/Latch.h"

namespace {

/// What the start callback, a plain function, does.
std::function<bool(StartedPluginMap*)> g_onStarted;

bool OnStarted(StartedPluginMap* started) {
  return g_onStarted(started);
}

std::string LastError() {
  char text[256] = "";
  KPX_GetLastError(text, sizeof(text));
  return text;
}

/// The platform, initialised and not started.
class Platform : public testing::Test {
 protected:
  Platform() {
    EXPECT_EQ(0, KPX_Init());
    g_onStarted = [](StartedPluginMap*) { return true; };
  }
  ~Platform() override { KPX_UnInit(); }

  std::unique_ptr<Subject> subject = Subject::Make();
  Latch begun;
  Latch mayEnd;
};

TEST_F(Platform, CallsBackOnceOnAThreadOfItsOwnWithAMap) {
  std::atomic<int> calls{0};
  bool hasMap = false;
  std::thread::id thread;
  g_onStarted = [&](StartedPluginMap* started) {
    ++calls;
    hasMap = started != nullptr;
    thread = std::this_thread::get_id();
    begun.Arrive();
    return true;
  };
  EXPECT_EQ(0, KPX_Start(&OnStarted));
  EXPECT_TRUE(begun.Wait());
  EXPECT_EQ(0, KPX_PreUnInit());
  EXPECT_EQ(0, KPX_Stop());
  EXPECT_EQ(1, calls);
  EXPECT_TRUE(hasMap);
  EXPECT_NE(std::this_thread::get_id(), thread);
}

TEST_F(Platform, DoesNotWaitForItsCallbackBeforeTheStop) {
  bool endedInTime = false;
  g_onStarted = [&](StartedPluginMap*) {
    begun.Arrive();
    endedInTime = mayEnd.Wait();
    return true;
  };
  EXPECT_EQ(0, KPX_Start(&OnStarted));
  EXPECT_TRUE(begun.Wait());
  EXPECT_EQ(0, KPX_PreUnInit());
  mayEnd.Arrive();
  EXPECT_EQ(0, KPX_Stop());
  EXPECT_TRUE(endedInTime);
}

TEST_F(Platform, StopReturnsAfterTheCallback) {
  std::atomic<bool> hasEnded{false};
  g_onStarted = [&](StartedPluginMap*) {
    begun.Arrive();
    mayEnd.Wait();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    hasEnded = true;
    return true;
  };
  ASSERT_EQ(0, KPX_Start(&OnStarted));
  ASSERT_TRUE(begun.Wait());
  mayEnd.Arrive();
  EXPECT_EQ(0, KPX_Stop());
  EXPECT_TRUE(hasEnded);
}

TEST_F(Platform, IsUsedFromTheCallbackAndFromOtherThreads) {
  const auto use = [] {
    KPX_GetRunningModule();
    UpdatePluginsLoadState({{"a", true}});
    pluginTakeTimeCountPrint("[a] Init OK", 7);
    pluginTakeTimeCountPrint("Plugins need to init:", -1);
    LastError();
    KPX_GetVersion(nullptr, 0);
  };
  g_onStarted = [&](StartedPluginMap* started) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) threads.emplace_back(use);
    use();
    for (std::thread& thread : threads) thread.join();
    started->emplace("a", nullptr);
    begun.Arrive();
    return true;
  };
  ASSERT_EQ(0, KPX_Start(&OnStarted));
  EXPECT_TRUE(begun.Wait());
  EXPECT_EQ(0, KPX_Stop());
}

TEST_F(Platform, TakesTheProduct) {
  AddonModel installed;
  installed.ID = "installed";
  installed.Installed = installed.InstalledCompatible = true;
  AddonModel offered;
  offered.ID = "offered";
  KPX_SetAddonAndToolModel({installed, offered}, {ToolModel()});
  std::vector<AddonModel> passed;
  KPX_GetInstalledAddonModel(passed);
  for (const AddonModel& addon : passed) EXPECT_EQ("installed", addon.ID);

  ProductModel product;
  product.Product = "NVX";
  EXPECT_NE(0, KPX_SetProductModel(product));
  AddPluginsInfo({{"a", std::make_shared<CPluginInfo>()}});
}

TEST_F(Platform, RefusesASecondInit) {
  EXPECT_NE(0, KPX_Init());
  EXPECT_NE("", LastError());
}

TEST_F(Platform, RefusesAStartWithoutACallback) {
  EXPECT_NE(0, KPX_Start(nullptr));
  EXPECT_NE("", LastError());
}

TEST_F(Platform, RefusesASecondStart) {
  ASSERT_EQ(0, KPX_Start(&OnStarted));
  EXPECT_NE(0, KPX_Start(&OnStarted));
  EXPECT_EQ(0, KPX_Stop());
}

TEST_F(Platform, RefusesToStopWhatIsNotStarted) {
  EXPECT_NE(0, KPX_Stop());
  EXPECT_NE("", LastError());
}

TEST_F(Platform, RefusesWhatComesAfterUnInit) {
  EXPECT_EQ(0, KPX_UnInit());
  EXPECT_NE(0, KPX_UnInit());
  EXPECT_NE(0, KPX_Start(&OnStarted));
}

TEST_F(Platform, CutsTheTextsToTheCallersBuffer) {
  KPX_Start(nullptr);
  struct {
    std::int32_t (*copy)(char* text, std::int32_t size);
  } const calls[] = {{&KPX_GetLastError}, {&KPX_GetVersion}};
  for (const auto& call : calls) {
    char whole[256] = "";
    const std::int32_t result = call.copy(whole, sizeof(whole));
    char cut[4] = "xxx";
    EXPECT_EQ(result, call.copy(cut, 3));
    EXPECT_EQ(std::string(whole).substr(0, 2), cut);
    char untouched[] = "x";
    EXPECT_EQ(result, call.copy(untouched, 0));
    EXPECT_STREQ("x", untouched);
    EXPECT_EQ(result, call.copy(nullptr, 256));
  }
  EXPECT_NE(0, KPX_GetLastError(nullptr, 0));
  char version[256] = "";
  const std::int32_t length = KPX_GetVersion(version, sizeof(version));
  EXPECT_EQ(length, static_cast<std::int32_t>(std::string(version).size()));
}

}  // namespace
