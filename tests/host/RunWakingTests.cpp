#include "host/RunWaking.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "sdk/base/thread.h"
#include "sdk/kpx/platform.h"
#include "tests/support/FunctionTask.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLong{20};

/// Whether a wait ends without a request and before its time.
bool WaitIsEnded(StopSignal& stop) {
  const Clock::time_point begin = Clock::now();
  return !stop.WaitFor(kLong) && Clock::now() - begin < kLong;
}

TEST(RunWaking, EndsAWaitWhenTheStartCallbackHasReturned) {
  StopSignal stop;
  const RunWaking waking(stop);
  ASSERT_EQ(0, KPX_Init());
  ASSERT_EQ(0, KPX_Start([](StartedPluginMap*) { return true; }));
  EXPECT_TRUE(WaitIsEnded(stop));
  KPX_Stop();
  KPX_UnInit();
}

TEST(RunWaking, EndsAWaitWhenTheLastTaskHasEnded) {
  StopSignal stop;
  const RunWaking waking(stop);
  CThreadManager& manager = CThreadManager::Instance();
  ASSERT_NE(0U, manager.GetAvailableThreadpool("pool", 1, 1, 0));
  ASSERT_TRUE(manager.PostTask(std::make_shared<FunctionTask>("pool", [] {}), false));
  EXPECT_TRUE(WaitIsEnded(stop));
  manager.ReleaseThread("pool", true);
}

}  // namespace
