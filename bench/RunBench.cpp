// How long whole products take to start and to stop, how much processor time that takes, and how
// much memory Frame_Init needs. Every run is a child process.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/TimedRuns.h"

namespace fs = std::filesystem;

namespace {

constexpr double kPollMilliseconds = 200;   // interval at which the frame looks for ready plugins
constexpr double kPluginMilliseconds = 50;  // what Init and UnInit of most plugins take

const fs::path kData = TEV_BENCH_DATA;

/// How the frame sleeps between two looks for ready plugins.
constexpr char kFull[] = "";
constexpr char kEarly[] = "--early";

/// Runs `product`, whose start and stop need at least `least` milliseconds each, and reports the
/// time beyond these as the frame's own.
void MeasureRun(benchmark::State& state, const fs::path& product, double least, const char* sleep) {
  for (auto _ : state) {
    std::map<std::string, double> run = RunTimed(product, sleep);
    if (run.empty()) {
      state.SkipWithError("the run failed");
      return;
    }
    state.SetIterationTime(run["start_ms"] * 1e-3);
    for (const std::string phase : {"start", "stop"}) {
      state.counters[phase + "_ms"] = run[phase + "_ms"];
      state.counters[phase + "_own_ms"] = run[phase + "_ms"] - least;
      state.counters[phase + "_cpu_ms"] = run[phase + "_cpu_ms"];
    }
    state.counters["waiting_ms"] = run["first_init_ms"];
    state.counters["waiting_cpu_ms"] = run["first_init_cpu_ms"];
  }
}

/// The same with sleeps that end early, where `path` is the time of the critical path. Beside it
/// the start by a parallel loader with a thread for each plugin.
void MeasureEarlyRun(benchmark::State& state, const std::string& name,
                     const std::vector<GeneratedPlugin>& plugins, double path) {
  const fs::path product = kData / ("early_" + name) / std::to_string(plugins.size());
  WriteProduct(product, plugins, 1);
  MeasureRun(state, product, path, kEarly);
  const double parallel = LoadTimed(product, plugins, static_cast<int>(plugins.size()));
  if (parallel < 0) state.SkipWithError("the loader failed");
  state.counters["parallel_ms"] = parallel;
}

/// A chain of `depth` plugins, 50 ms each: one level for each plugin.
std::vector<GeneratedPlugin> ChainOf(std::size_t depth) {
  std::vector<GeneratedPlugin> plugins = IndependentPlugins(depth);
  for (std::size_t i = 1; i < depth; ++i) plugins[i].dependsOn = {plugins[i - 1].id};
  return plugins;
}

/// A chain of as many plugins as the argument says.
void Chain(benchmark::State& state) {
  const auto depth = static_cast<std::size_t>(state.range(0));
  const fs::path product = kData / "chain" / std::to_string(depth);
  WriteProduct(product, ChainOf(depth), 1);
  MeasureRun(state, product, static_cast<double>(depth) * kPollMilliseconds, kFull);
}

void EarlyChain(benchmark::State& state) {
  const auto depth = static_cast<std::size_t>(state.range(0));
  MeasureEarlyRun(state, "chain", ChainOf(depth), static_cast<double>(depth) * kPluginMilliseconds);
}

/// As many plugins as the argument says, 50 ms each, without dependencies.
void Independent(benchmark::State& state) {
  const fs::path product = kData / "independent";
  WriteProduct(product, IndependentPlugins(static_cast<std::size_t>(state.range(0))), 1);
  MeasureRun(state, product, kPollMilliseconds, kFull);
}

void EarlyIndependent(benchmark::State& state) {
  MeasureEarlyRun(state, "independent",
                  IndependentPlugins(static_cast<std::size_t>(state.range(0))),
                  kPluginMilliseconds);
}

/// As many plugins as the argument says, 50 ms each, which all wait for one more plugin of 1900 ms:
/// eleven polling intervals at the start and at the stop.
void Waiting(benchmark::State& state) {
  const fs::path product = kData / "waiting";
  WriteProduct(product, WaitingPlugins(static_cast<std::size_t>(state.range(0))), 1);
  MeasureRun(state, product, 11 * kPollMilliseconds, kFull);
}

void EarlyWaiting(benchmark::State& state) {
  MeasureEarlyRun(state, "waiting", WaitingPlugins(static_cast<std::size_t>(state.range(0))),
                  1900 + kPluginMilliseconds);
}

/// The start of four levels of ten plugins: by the frame with full sleeps and with sleeps that end
/// early, by a parallel loader and by a serial one.
void Levels(benchmark::State& state, const std::string& name, const fs::path& library,
            const fs::path& slow) {
  const std::vector<GeneratedPlugin> plugins = FourLevels(library, slow);
  const fs::path product = kData / "levels" / name;
  WriteProduct(product, plugins, 1);
  for (auto _ : state) {
    std::map<std::string, double> full = RunTimed(product, kFull);
    std::map<std::string, double> early = RunTimed(product, kEarly);
    const double parallel = LoadTimed(product, plugins, 10);
    const double serial = LoadTimed(product, plugins, 0);
    if (full.empty() || early.empty() || parallel < 0 || serial < 0) {
      state.SkipWithError("the start failed");
      return;
    }
    state.SetIterationTime(early["start_ms"] * 1e-3);
    state.counters["full_ms"] = full["start_ms"];
    state.counters["early_ms"] = early["start_ms"];
    state.counters["parallel_ms"] = parallel;
    state.counters["serial_ms"] = serial;
  }
}

/// The peak of resident memory in Frame_Init, less the memory resident before it, and the size of
/// the XML.
void Memory(benchmark::State& state) {
  const fs::path product = kData / "memory" / std::to_string(state.range(0));
  std::vector<GeneratedPlugin> plugins(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < plugins.size(); ++i) plugins[i].id = GeneratedID(i);
  WriteProduct(product, plugins, 20);
  for (auto _ : state) {
    std::map<std::string, double> init = RunTimed(product, "--init");
    if (init.empty()) {
      state.SkipWithError("Frame_Init failed");
      return;
    }
    state.counters["xml_kib"] = static_cast<double>(XmlBytes(product)) / 1024;
    state.counters["peak_kib"] = init["peak_kib"] - init["before_kib"];
    state.counters["kept_kib"] = init["after_kib"] - init["before_kib"];
  }
}

BENCHMARK(Chain)->DenseRange(1, 6)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Independent)->Arg(200)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Waiting)->Arg(199)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(EarlyChain)
    ->DenseRange(1, 6)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(EarlyIndependent)
    ->Arg(200)
    ->Arg(900)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(EarlyWaiting)->Arg(199)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Levels, nothing, "nothing", LibraryThatTakes(0), LibraryThatTakes(0))
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Levels, sleep, "sleep", LibraryThatTakes(50), LibraryThatTakes(50))
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Levels, work, "work", LibraryThatWorks(), LibraryThatWorks())
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Levels, slow, "slow", LibraryThatTakes(5), LibraryThatTakes(2000))
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Memory)->Arg(10)->Arg(100)->Arg(300)->Arg(900)->Iterations(1)->Unit(
    benchmark::kMillisecond);

}  // namespace
