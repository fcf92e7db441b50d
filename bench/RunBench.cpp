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

constexpr double kPollMilliseconds = 200;  // interval at which the frame looks for ready plugins

const fs::path kData = TEV_BENCH_DATA;

/// Runs `product`, whose start and stop need at least `levels` polling intervals of the frame, and
/// reports the time beyond these intervals as the frame's own.
void MeasureRun(benchmark::State& state, const fs::path& product, double levels) {
  for (auto _ : state) {
    std::map<std::string, double> run = RunTimed(product);
    if (run.empty()) {
      state.SkipWithError("the run failed");
      return;
    }
    state.SetIterationTime(run["start_ms"] * 1e-3);
    for (const std::string phase : {"start", "stop"}) {
      state.counters[phase + "_ms"] = run[phase + "_ms"];
      state.counters[phase + "_own_ms"] = run[phase + "_ms"] - levels * kPollMilliseconds;
      state.counters[phase + "_cpu_ms"] = run[phase + "_cpu_ms"];
    }
    state.counters["waiting_ms"] = run["first_init_ms"];
    state.counters["waiting_cpu_ms"] = run["first_init_cpu_ms"];
  }
}

/// A chain of as many plugins as the argument says, 50 ms each: one level for each plugin.
void Chain(benchmark::State& state) {
  const auto depth = static_cast<std::size_t>(state.range(0));
  std::vector<GeneratedPlugin> plugins = IndependentPlugins(depth);
  for (std::size_t i = 1; i < depth; ++i) plugins[i].dependsOn = {plugins[i - 1].id};
  const fs::path product = kData / "chain" / std::to_string(depth);
  WriteProduct(product, plugins, 1);
  MeasureRun(state, product, static_cast<double>(depth));
}

/// As many plugins as the argument says, 50 ms each, without dependencies.
void Independent(benchmark::State& state) {
  const fs::path product = kData / "independent";
  WriteProduct(product, IndependentPlugins(static_cast<std::size_t>(state.range(0))), 1);
  MeasureRun(state, product, 1);
}

/// As many plugins as the argument says, 50 ms each, which all wait for one more plugin of 1900 ms:
/// eleven polling intervals at the start and at the stop.
void Waiting(benchmark::State& state) {
  const fs::path product = kData / "waiting";
  WriteProduct(product, WaitingPlugins(static_cast<std::size_t>(state.range(0))), 1);
  MeasureRun(state, product, 11);
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
BENCHMARK(Memory)->Arg(10)->Arg(100)->Arg(300)->Arg(900)->Iterations(1)->Unit(
    benchmark::kMillisecond);

}  // namespace
