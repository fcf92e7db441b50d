// How long whole products take to start and to stop, what the processor does meanwhile, and how
// much memory Frame_Init takes. Every life is a child process.

#include <benchmark/benchmark.h>
#include <stdio.h>  // popen

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "bench/ProductGenerator.h"

namespace fs = std::filesystem;

namespace {

constexpr double kPollMilliseconds = 200;  // how often the frame looks for plugins that are ready

const fs::path kData = TEV_BENCH_DATA;

struct ClosePipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

/// Runs the child on `product`; what it printed, or nothing when it failed.
std::map<std::string, double> Live(const fs::path& product, const std::string& option = "") {
  const std::string command = TEV_LIFE_CHILD " '" + product.string() + "' " + option;
  const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
  std::map<std::string, double> numbers;
  char name[64] = {};
  double number = 0;
  while (pipe && std::fscanf(pipe.get(), "%63s %lf", name, &number) == 2) numbers[name] = number;
  return numbers;
}

fs::path LibraryThatTakes(int milliseconds) {
  return kData / "libraries" / ("takes_" + std::to_string(milliseconds) + ".dll");
}

/// Lives `product`, in which `levels` rounds of looking are the least that a start or a stop takes,
/// and reports what goes beyond those as the frame's own.
void MeasureLife(benchmark::State& state, const fs::path& product, double levels) {
  for (auto _ : state) {
    std::map<std::string, double> life = Live(product);
    if (life.empty()) {
      state.SkipWithError("the life failed");
      return;
    }
    state.SetIterationTime(life["start_ms"] * 1e-3);
    for (const std::string phase : {"start", "stop"}) {
      state.counters[phase + "_ms"] = life[phase + "_ms"];
      state.counters[phase + "_own_ms"] = life[phase + "_ms"] - levels * kPollMilliseconds;
      state.counters[phase + "_cpu_ms"] = life[phase + "_cpu_ms"];
    }
    state.counters["waiting_ms"] = life["first_init_ms"];
    state.counters["waiting_cpu_ms"] = life["first_init_cpu_ms"];
  }
}

/// A chain as long as the argument, 50 ms a plugin: a level each.
void Chain(benchmark::State& state) {
  const auto depth = static_cast<std::size_t>(state.range(0));
  std::vector<GeneratedPlugin> plugins(depth);
  for (std::size_t i = 0; i < depth; ++i) {
    plugins[i] = {GeneratedID(i), {}, LibraryThatTakes(50)};
    if (i > 0) plugins[i].dependsOn.push_back(GeneratedID(i - 1));
  }
  const fs::path product = kData / "chain" / std::to_string(depth);
  WriteProduct(product, plugins, 1);
  MeasureLife(state, product, static_cast<double>(depth));
}

/// As many plugins as the argument says, 50 ms each, none of which waits for another.
void Independent(benchmark::State& state) {
  std::vector<GeneratedPlugin> plugins(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    plugins[i] = {GeneratedID(i), {}, LibraryThatTakes(50)};
  }
  const fs::path product = kData / "independent";
  WriteProduct(product, plugins, 1);
  MeasureLife(state, product, 1);
}

/// As many plugins as the argument says, 50 ms each, which all wait for one more that takes 2000
/// ms: eleven rounds at the start and at the stop.
void Waiting(benchmark::State& state) {
  std::vector<GeneratedPlugin> plugins(static_cast<std::size_t>(state.range(0)) + 1);
  plugins[0] = {GeneratedID(0), {}, LibraryThatTakes(1900)};
  for (std::size_t i = 1; i < plugins.size(); ++i) {
    plugins[i] = {GeneratedID(i), {GeneratedID(0)}, LibraryThatTakes(50)};
  }
  const fs::path product = kData / "waiting";
  WriteProduct(product, plugins, 1);
  MeasureLife(state, product, 11);
}

/// Frame_Init's peak of resident memory, beyond what was resident before, and the bytes of XML.
void Memory(benchmark::State& state) {
  const fs::path product = kData / "memory" / std::to_string(state.range(0));
  std::vector<GeneratedPlugin> plugins(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < plugins.size(); ++i) plugins[i].id = GeneratedID(i);
  WriteProduct(product, plugins, 20);
  for (auto _ : state) {
    std::map<std::string, double> init = Live(product, "--init");
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
