// The processor time of a post when many threads of the pool are idle.

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "sdk/base/thread.h"
#include "tests/support/FunctionTask.h"

namespace {

constexpr char kPool[] = "bench";
constexpr int kTasks = 200;

/// Wait returns after `arrivals` calls of Arrive.
class Meeting {
 public:
  explicit Meeting(int arrivals) : m_missing(arrivals) {}

  void Arrive() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (--m_missing == 0) m_complete.notify_all();
  }
  void Wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_complete.wait(lock, [this] { return m_missing == 0; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_complete;
  int m_missing;  // guarded by m_mutex
};

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
  Meeting all(threads);  // ensures that every thread has run a task
  for (int i = 0; i < threads; ++i) {
    Post([&all] {
      all.Arrive();
      all.Wait();
    });
  }
  all.Wait();
  for (auto _ : state) {
    for (int i = 0; i < kTasks; ++i) {
      Meeting ran(1);
      Post([&ran] { ran.Arrive(); });
      ran.Wait();
    }
  }
  manager.ReleaseThread(kPool, true);
}

BENCHMARK(PostOneByOne)->Arg(1)->Arg(200)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

}  // namespace
