// How much longer the start of 200 plugins takes with a flight record.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/TimedRuns.h"

namespace fs = std::filesystem;

namespace {

const fs::path kProducts = fs::path(TEV_BENCH_DATA) / "record";

using Numbers = std::map<std::string, double>;

bool CoinIsHeads() {
  static std::mt19937 generator(std::random_device{}());
  return std::bernoulli_distribution()(generator);
}

/// Starts the product once without any observer and once with a record, in random order, so that
/// other load on the machine, which changes over time, affects both alike.
void MeasureRecord(benchmark::State& state, const fs::path& product) {
  const std::string record = "--start '" + (product / "record.jsonl").string() + "'";
  for (auto _ : state) {
    const bool recordFirst = CoinIsHeads();
    Numbers with;
    if (recordFirst) with = RunTimed(product, record);
    Numbers without = RunTimed(product, "--start");
    if (!recordFirst) with = RunTimed(product, record);
    if (with.empty() || without.empty()) {
      state.SkipWithError("the start failed");
      return;
    }
    state.SetIterationTime(with["start_ms"] * 1e-3);
    state.counters["lines"] = with["lines"];
    for (const std::string what : {"start_ms", "start_cpu_ms"}) {
      state.counters["without_" + what] = without[what];
      state.counters["with_" + what] = with[what];
    }
  }
}

void Record(benchmark::State& state, const std::string& name,
            const std::vector<GeneratedPlugin>& plugins) {
  static std::map<std::string, bool> written;
  const fs::path product = kProducts / name;
  if (!std::exchange(written[name], true)) WriteProduct(product, plugins, 1);
  MeasureRecord(state, product);
}

void Independent(benchmark::State& state) {
  Record(state, "independent", IndependentPlugins(200));
}

void Waiting(benchmark::State& state) {
  Record(state, "waiting", WaitingPlugins(199));
}

BENCHMARK(Independent)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Waiting)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
