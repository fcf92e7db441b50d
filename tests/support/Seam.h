#pragma once

#include <gmock/gmock.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "sdk/base/thread.h"
#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "tests/support/PlatformDouble.h"
#include "tests/support/PoolDouble.h"
#include "tests/support/TimeLimit.h"

// Doubles of the libraries around the frame. Their free functions forward to the current `Seam`,
// which the test owns: it determines the results and records the calls. What no test determines
// keeps the contract of the SDK (tests/contract).

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

/// A plugin library of the loader's double, and how it behaves.
struct ScriptedLibrary {
  bool loads = true;
  std::function<void()> onLoad = [] {};  // when it is mapped, as a static constructor
  bool hasInit = true;
  bool hasUnInit = true;
  std::function<bool()> init = [] { return true; };
  std::function<bool()> uninit = [] { return true; };
  std::function<void()> onFree = [] {};

  int handles = 0;  // loaded and not yet freed
};

class Seam {
 public:
  Seam();
  ~Seam();

  static Seam& Current();

  testing::NiceMock<MockPlatform> platform;
  testing::NiceMock<MockLpc> lpc;
  testing::NiceMock<MockThreads> threads;

  /// Records a call whose order tests check: "KPX_Init", "load a.server", ...
  void Record(const std::string& call);
  std::vector<std::string> Calls() const;

  // ---- the clock: the result of GetTickCount64; the test and each sleep move it. A sleep takes
  // some real microseconds, and throws when no task was posted for kLongestWait: the frame would
  // wait for ever.
  std::atomic<std::uint64_t> now{1000};

  // ---- plugin libraries: by file name without directory and extension. Any other file fails to
  // load.
  std::map<std::string, ScriptedLibrary> libraries;
  std::uint32_t loadError = 126;
  std::vector<std::string> loadedPaths;

  // ---- tasks: stored until the frame sleeps, and then run on the pool's thread, in the order in
  // which they were posted, while the frame waits; a test may replace onSleep. Not stored: run at
  // once.
  bool keepsTasks = true;
  std::vector<std::shared_ptr<CTMTask>> tasks;
  std::function<void()> onSleep = [this] { RunTasks(); };
  std::vector<std::uint32_t> sleeps;
  void RunTasks();
  void Run(const std::vector<std::shared_ptr<CTMTask>>& some);

  // ---- the platform's thread: runs the start callback there and waits for it.
  static bool CallBack(KPXStartFinishFn finished, StartedPluginMap* started);

  // ---- the running executable.
  std::string exePath;
  std::function<void()> onExePath = [] {};  // called when the frame asks for it

  // ---- locks: every Lock and Unlock of any lock.
  std::vector<std::string> lockCalls;

  // ---- for the doubles themselves.
  unsigned int Grant(const std::string& pool, int least, int most, int reserved);
  bool Post(std::shared_ptr<CTMTask> task, bool urgent);
  bool Release(const std::string& pool, bool wait);
  ScriptedLibrary* Load(const std::string& path);
  bool Free(ScriptedLibrary& library);
  void NoteLockCall(const char* call);
  void Sleep(std::uint32_t milliseconds);

 private:
  PoolDouble* FindPool(const std::string& name);
  PoolDouble* FindGranted(const std::string& name);

  TimeLimit m_limit;  // restarted by each task that is posted
  PlatformDouble m_platform;
  LpcDouble m_lpc;

  mutable std::mutex m_mutex;  // guards the records above and below
  std::vector<std::string> m_calls;
  std::list<PoolDouble> m_pools;  // one more for each time that a name is granted anew
};
