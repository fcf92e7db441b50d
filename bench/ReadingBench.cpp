// How long Frame_Init takes to read a product, compared with the same calls of libxml2 alone.
//
// Both are measured in processor time of their thread, which does not include other work on the
// machine. The files are in the page cache, so neither has to wait.

#include <benchmark/benchmark.h>

#include <ctime>
#include <deque>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "bench/ProductGenerator.h"
#include "bench/XmlRecorder.h"
#include "reference/base/Log.h"
#include "reference/xrt/ExecutablePath.h"
#include "sdk/kpx/platform.h"
#include "sdk/lpc/lpc.h"
#include "src/PluginFrame/PluginManager.h"

namespace fs = std::filesystem;

namespace {

constexpr int kMenuItems = 20;

const fs::path kProducts = fs::path(TEV_BENCH_DATA) / "reading";

double ThreadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// One initialisation of the frame, with a new manager: a manager's Init may run only once.
class InitialisedFrame {
 public:
  InitialisedFrame() = default;
  ~InitialisedFrame() {
    TevLPCFrameUnInit();
    KPX_UnInit();
  }
  InitialisedFrame(const InitialisedFrame&) = delete;
  InitialisedFrame& operator=(const InitialisedFrame&) = delete;

  /// What Frame_Init does.
  void Init() {
    if (KPX_Init() != 0 || !m_manager.Init()) throw std::runtime_error("the frame did not come up");
  }

 private:
  PluginFrame::CPluginManager m_manager;
};

/// Makes the frame read the product with `plugins` plugins. The frame keeps the product's folder
/// for the whole process, so that folder is a symbolic link, which is set to another product.
void SwitchTo(std::size_t plugins) {
  const fs::path current = kProducts / "current";
  fs::remove(current);
  fs::create_directory_symlink(std::to_string(plugins), current);
}

/// The calls of libxml2 with which the frame reads that product. Generates the product and records
/// the calls once for each size.
const std::vector<XmlStep>& StepsOf(std::size_t plugins) {
  static std::map<std::size_t, std::vector<XmlStep>> known;
  const auto [steps, isNew] = known.try_emplace(plugins);
  if (isNew) {
    std::vector<GeneratedPlugin> list(plugins);
    for (std::size_t i = 0; i < plugins; ++i) {
      list[i].id = GeneratedID(i);
      for (std::size_t other = i - i % 10; other < i && other < i - i % 10 + 2; ++other) {
        list[i].dependsOn.push_back(GeneratedID(other));
      }
    }
    WriteProduct(kProducts / std::to_string(plugins), list, kMenuItems);
    SwitchTo(plugins);
    ConfigureLog({0, "", 0, 0});
    SetExecutablePath((kProducts / "current" / "bin" / "HUB").string());
    InitialisedFrame frame;
    const XmlRecorder recorder(steps->second);
    frame.Init();
  }
  SwitchTo(plugins);
  return steps->second;
}

double TimeFrame() {
  InitialisedFrame frame;
  const double begin = ThreadSeconds();
  frame.Init();
  return ThreadSeconds() - begin;
}

double TimeFloor(const std::vector<XmlStep>& steps) {
  std::deque<std::string> copies;
  const double begin = ThreadSeconds();
  Replay(steps, copies);
  const double seconds = ThreadSeconds() - begin;
  benchmark::DoNotOptimize(copies.back());
  return seconds;
}

/// Measures Frame_Init. The floor is measured in the same iteration, alternately before and after
/// it: the speed of a shared machine varies by more than the two differ.
void FrameInit(benchmark::State& state) {
  const std::vector<XmlStep>& steps = StepsOf(static_cast<std::size_t>(state.range(0)));
  static bool floorFirst = false;
  double frame = 0;
  double floor = 0;
  for (auto _ : state) {
    const double before = floorFirst ? TimeFloor(steps) : 0;
    const double seconds = TimeFrame();
    floor += floorFirst ? before : TimeFloor(steps);
    frame += seconds;
    floorFirst = !floorFirst;
    state.SetIterationTime(seconds);
  }
  state.SetComplexityN(state.range(0));
  state.counters["floor_ms"] = 1e3 * floor / static_cast<double>(state.iterations());
  state.counters["ratio"] = frame / floor;
  state.counters["steps"] = static_cast<double>(steps.size());
}

BENCHMARK(FrameInit)
    ->Arg(10)
    ->Arg(100)
    ->Arg(300)
    ->Arg(900)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

}  // namespace
