#pragma once

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sdk/base/thread.h"
#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"

// Doubles of the libraries around the frame. Each free function of the seam goes to the current
// `Seam`, which the test owns: results are scripted there, calls are recorded there.

/// The platform library.
class MockPlatform {
 public:
  MOCK_METHOD(std::int32_t, Init, ());
  MOCK_METHOD(std::int32_t, Start, (KPXStartFinishFn finished));
  MOCK_METHOD(std::int32_t, PreUnInit, ());
  MOCK_METHOD(std::int32_t, Stop, ());
  MOCK_METHOD(std::int32_t, UnInit, ());
  MOCK_METHOD(std::int32_t, GetLastError, (char* text, std::int32_t size));
  MOCK_METHOD(std::int32_t, GetVersion, (char* text, std::int32_t size));
  MOCK_METHOD(void, SetAddonAndToolModel,
              (const std::vector<AddonModel>& addons, const std::vector<ToolModel>& tools));
  MOCK_METHOD(void, GetInstalledAddonModel, (std::vector<AddonModel> & installed));
  MOCK_METHOD(std::int32_t, GetRunningModule, ());
  MOCK_METHOD(std::int32_t, SetProductModel, (const ProductModel& model));
  MOCK_METHOD(void, AddPluginsInfo, (const PluginInfoMap& plugins));
  MOCK_METHOD(void, UpdatePluginsLoadState, ((const std::map<std::string, bool>&)started));
  MOCK_METHOD(void, TakeTime, (const std::string& text, std::int32_t milliseconds));
};

/// The local-procedure-call framework.
class MockLpc {
 public:
  MOCK_METHOD(std::int32_t, Init, (const std::string& name, const PlatformInfo& info));
  MOCK_METHOD(void, Notify, (const std::string& text));
  MOCK_METHOD(std::int32_t, UnInit, ());
};

/// The base library's pools.
class MockThreads {
 public:
  MOCK_METHOD(unsigned int, Grant, (const std::string& name, int least, int most, int reserved));
  MOCK_METHOD(void, Release, (const std::string& name, bool wait));
  MOCK_METHOD(bool, Post, (const std::string& group, bool urgent));
};

/// A plugin library as the loader double knows it.
struct ScriptedLibrary {
  bool loads = true;
  std::function<void()> onLoad = [] {};
  bool hasInit = true;
  bool hasUnInit = true;
  std::function<bool()> init = [] { return true; };
  std::function<bool()> uninit = [] { return true; };
  std::function<void()> onFree = [] {};

  int handles = 0;  // given out and not yet given back
};

class Seam {
 public:
  Seam();
  ~Seam();

  static Seam& Current();

  testing::NiceMock<MockPlatform> platform;
  testing::NiceMock<MockLpc> lpc;
  testing::NiceMock<MockThreads> threads;

  /// Every call that matters for the frame's order, as a word: "KPX_Init", "load a.server", ...
  void Record(const std::string& call);
  std::vector<std::string> Calls() const;

  // ---- the clock: GetTickCount64, moved only by the test.
  std::uint64_t now = 1000;

  // ---- plugin libraries: by file name without directory and extension. A file that is not named
  // here does not load.
  std::map<std::string, ScriptedLibrary> libraries;
  std::uint32_t loadError = 126;
  std::vector<std::string> loadedPaths;

  // ---- tasks: kept until the frame sleeps, and run then, on the frame's own thread, in the order
  // posted unless a test has another idea.
  std::vector<std::shared_ptr<CTMTask>> tasks;
  std::function<void()> onSleep = [this] { RunTasks(); };
  std::vector<std::uint32_t> sleeps;
  void RunTasks();

  // ---- the running executable.
  std::string exePath;

  // ---- locks: every Lock and Unlock of any lock.
  std::vector<std::string> lockCalls;

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_calls;
};
