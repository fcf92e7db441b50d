// Two hundred runs in one process with the reference libraries and real plugin libraries: the
// process's memory must not grow after the twentieth run.
//
// Reads the allocator's count and the process's memory map in ways that only Linux offers.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "reference/base/Log.h"
#include "reference/base/ThreadPools.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/xrt/ExecutablePath.h"
#include "sdk/base/path.h"
#include "sdk/os/os.h"
#include "sdk/xrt/runtime.h"
#include "src/PluginFrame/PluginManager.h"
#include "tests/support/ProductTree.h"
#include "tests/support/TimeLimit.h"

/// Replaces the runtime's function for all libraries of this process: the frame sleeps for a fifth
/// of a second each time it waits for plugins, so that two hundred runs would take minutes.
void XRT_Sleep(std::uint32_t) {
  std::this_thread::sleep_for(std::chrono::microseconds(200));
}

namespace {

using PluginFrame::CPluginManager;

constexpr int kWarmUpRuns = 20;
constexpr int kRuns = 200;

/// By how many bytes two counts of an unchanged heap may differ, since threads cache freed blocks.
/// A leak of 91 bytes or more in each run exceeds it.
constexpr long kHeapNoise = 16L * 1024;

/// The same for resident memory, which the allocator does not return at once.
constexpr long kResidentNoise = 128L * 1024;

/// The number of bytes that are allocated and not freed.
long Heap() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
}

/// Whether Heap() counts an allocation: otherwise no test here could fail.
bool HeapIsCounted() {
  const long before = Heap();
  const std::vector<char> probe(100000);
  return Heap() - before >= static_cast<long>(probe.size());
}

long Resident() {
  long all = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

bool IsMapped(const std::string& file) {
  std::ifstream maps("/proc/self/maps");
  const std::string text{std::istreambuf_iterator<char>(maps), std::istreambuf_iterator<char>()};
  return text.find("/" + file) != std::string::npos;
}

/// The manager that the platform's thread starts.
CPluginManager* g_manager = nullptr;

bool StartPlugins(StartedPluginMap* started) {
  return g_manager->Start(started);
}

/// By how many bytes memory has grown.
struct Growth {
  long heap = 0;
  long resident = 0;
};

class RepeatedRuns : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(HeapIsCounted());
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread
    mallopt(M_ARENA_MAX, 1);  // with several arenas, the memory in use would vary at random
    ConfigureLog({0, "", 0, 0});
    SetExecutablePath(m_tree.ExePath());
    m_tree.Product("a: b:a c:a d:b,c e:d f: g:f h:g,e missing:a i:missing sub");
    for (const std::string& name : m_libraries) {
      std::filesystem::copy_file(TEV_FIXTURE_OK, m_tree.ExeDirectory() + name + ".dll");
    }
  }

  /// Runs the product with this manager, which the caller owns.
  void RunWith(CPluginManager& manager) {
    g_manager = &manager;
    Run({[&manager] { return KPX_Init() == 0 && manager.Init(); },
         [] { return KPX_Start(&StartPlugins) == 0; },
         [&manager] {
           manager.Uninit();
           KPX_Stop();
         },
         [] { KPX_UnInit(); }});
  }

  /// Loads the frame's library, runs the product and unloads the library, as a host would.
  void RunWithLibrary() {
    const HMODULE frame = LoadLibraryW(LocalToWide(TEV_FRAME).c_str());
    ASSERT_NE(nullptr, frame);
    // The destructor of a task still runs the frame's code: Run waits for the last task.
    Run({[frame] { return Call<std::int32_t>(frame, "Frame_Init") == 0; },
         [frame] { return Call<std::int32_t>(frame, "Frame_Start") == 0; },
         [frame] { Call<void>(frame, "Frame_Stop"); },
         [frame] { Call<void>(frame, "Frame_UnInit"); }});
    ASSERT_TRUE(FreeLibrary(frame));
    ASSERT_FALSE(IsMapped("libTevPluginFrame"));
  }

  /// Calls `run` repeatedly. Returns the growth from the end of the warm-up to the last run.
  Growth GrowthOf(const std::function<void()>& run) {
    long heap = 0;
    long resident = 0;
    for (int number = 1; number <= kRuns && !HasFatalFailure(); ++number) {
      SCOPED_TRACE("run " + std::to_string(number));
      run();
      for (const std::string& name : m_libraries) EXPECT_FALSE(IsMapped(name + ".dll"));
      if (number != kWarmUpRuns) continue;
      heap = Heap();
      resident = Resident();
    }
    return {Heap() - heap, Resident() - resident};
  }

 private:
  /// The steps of a run, in order; the first two return whether they succeeded.
  struct Steps {
    std::function<bool()> init;
    std::function<bool()> start;
    std::function<void()> stop;
    std::function<void()> uninit;
  };

  void Run(const Steps& steps) const {
    ASSERT_TRUE(steps.init());
    ASSERT_TRUE(steps.start());
    ASSERT_NO_FATAL_FAILURE(AwaitStart());
    steps.stop();
    steps.uninit();
    AwaitQuiet();
  }

  template <typename Result>
  static Result Call(HMODULE library, const char* name) {
    const auto entry = reinterpret_cast<void (*)()>(GetProcAddress(library, name));
    return reinterpret_cast<Result (*)()>(entry)();
  }

  void AwaitStart() const {
    AwaitThat("the start does not end", [] { return StartCallbackResult().has_value(); });
    const PlatformRecord record = SnapshotPlatform();
    ASSERT_TRUE(*record.callbackResult);
    ASSERT_EQ(m_libraries, std::set<std::string>(record.handles.begin(), record.handles.end()));
    ASSERT_EQ(m_libraries.size(), record.loadState->size());
  }

  /// Waits for the end of the pools' threads, which also frees their cached blocks.
  static void AwaitQuiet() {
    AwaitThat("a task does not end", [] { return UnfinishedTasks() == 0; });
    AwaitThat("a thread does not end", [] {
      const std::filesystem::directory_iterator threads("/proc/self/task");
      return std::distance(begin(threads), end(threads)) == 1;
    });
  }

  const std::set<std::string> m_libraries{"a", "b", "c", "d", "e", "f", "g", "h", "i", "sub"};
  ProductTree m_tree;
};

TEST_F(RepeatedRuns, LeavesNothingWithItsManager) {
  const Growth growth = GrowthOf([this] {
    CPluginManager manager;
    RunWith(manager);
  });
  EXPECT_LE(growth.heap, kHeapNoise);
  EXPECT_LE(growth.resident, kResidentNoise);
}

// The manager in the library is never deleted, since tasks may use it to the end of the process. A
// host that reloads the library therefore leaks one manager for each load, and nothing else.
TEST_F(RepeatedRuns, OfAReloadedLibraryLeavesItsManagerAlone) {
  std::vector<std::unique_ptr<CPluginManager>> kept;
  kept.reserve(kRuns);
  const Growth ofManagers = GrowthOf([this, &kept] {
    kept.push_back(std::make_unique<CPluginManager>());
    RunWith(*kept.back());
  });
  const Growth ofReloads = GrowthOf([this] { RunWithLibrary(); });
  EXPECT_LE(ofReloads.heap, ofManagers.heap + kHeapNoise);
  EXPECT_LE(ofReloads.resident, ofManagers.resident + kResidentNoise);
}

}  // namespace
