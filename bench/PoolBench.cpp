// The processor time of a post when many threads of the pool are idle.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>

#include "sdk/base/thread.h"
#include "tests/support/FunctionTask.h"
#include "tests/support/Latch.h"

namespace {

constexpr char kPool[] = "bench";
constexpr int kTasks = 200;

void Post(std::function<void()> work) {
  CThreadManager::Instance().PostTask(std::make_shared<FunctionTask>(kPool, std::move(work)),
                                      false);
}

/// Posts 200 tasks that do nothing, each when the one before has run, to a pool with as many idle
/// threads as the argument says. The time is the processor time of the whole process.
void PostOneByOne(benchmark::State& state) {
  const auto threads = static_cast<int>(state.range(0));
  CThreadManager& manager = CThreadManager::Instance();
  if (manager.GetAvailableThreadpool(kPool, threads, threads, 0) == 0) {
    state.SkipWithError("no such pool");
    return;
  }
  Latch all(threads);  // ensures that every thread has run a task
  for (int i = 0; i < threads; ++i) {
    Post([&all] { all.ArriveAndWait(); });
  }
  if (!all.Wait()) std::abort();  // late tasks would use the latch after its destruction
  for (auto _ : state) {
    for (int i = 0; i < kTasks; ++i) {
      Latch ran;
      Post([&ran] { ran.Arrive(); });
      if (!ran.Wait()) std::abort();
    }
  }
  manager.ReleaseThread(kPool, true);
}

BENCHMARK(PostOneByOne)->Arg(1)->Arg(200)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

}  // namespace
