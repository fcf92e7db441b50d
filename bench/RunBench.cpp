// How long whole products take to start and to stop, what the processor does meanwhile, and how
// much memory Frame_Init takes. Every run is a child process.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/TimedRuns.h"

namespace fs = std::filesystem;

namespace {

constexpr double kPollMilliseconds = 200;  // how often the frame looks for plugins that are ready

const fs::path kData = TEV_BENCH_DATA;

/// Runs `product`, in which `levels` rounds of looking are the least that a start or a stop takes,
/// and reports what goes beyond those as the frame's own.
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

/// A chain as long as the argument, 50 ms a plugin: a level each.
void Chain(benchmark::State& state) {
  const auto depth = static_cast<std::size_t>(state.range(0));
  std::vector<GeneratedPlugin> plugins = IndependentPlugins(depth);
  for (std::size_t i = 1; i < depth; ++i) plugins[i].dependsOn = {plugins[i - 1].id};
  const fs::path product = kData / "chain" / std::to_string(depth);
  WriteProduct(product, plugins, 1);
  MeasureRun(state, product, static_cast<double>(depth));
}

/// As many plugins as the argument says, 50 ms each, none of which waits for another.
void Independent(benchmark::State& state) {
  const fs::path product = kData / "independent";
  WriteProduct(product, IndependentPlugins(static_cast<std::size_t>(state.range(0))), 1);
  MeasureRun(state, product, 1);
}

/// As many plugins as the argument says, 50 ms each, which all wait for one more that takes 2000
/// ms: eleven rounds at the start and at the stop.
void Waiting(benchmark::State& state) {
  const fs::path product = kData / "waiting";
  WriteProduct(product, WaitingPlugins(static_cast<std::size_t>(state.range(0))), 1);
  MeasureRun(state, product, 11);
}

/// Frame_Init's peak of resident memory, beyond what was resident before, and the bytes of XML.
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
