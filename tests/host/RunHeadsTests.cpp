#include "host/RunHeads.h"

#include <gtest/gtest.h>

#include <chrono>

#include "reference/os/ProcessInfo.h"
#include "sdk/kpx/platform.h"
#include "workbench/record/FlightRecord.h"

namespace {

TEST(RunHead, HoldsAllThatIsKnownBeforeTheRun) {
  char platformVersion[128] = {};
  KPX_GetVersion(platformVersion, sizeof(platformVersion));
  const RunClock clock = {std::chrono::system_clock::from_time_t(1'000'000'000), 77};
  RunHead expected;
  expected.time = "2001-09-09T01:46:40.000Z";
  expected.zone = clock.ZoneText();
  expected.nanoseconds = 77;
  expected.pid = static_cast<std::int64_t>(ProcessNumber());
  expected.run = "2001-09-09T01:46:40.000Z-" + std::to_string(expected.pid);
  expected.host = HostName();
  expected.hubVersion = TEV_VERSION;
  expected.frameVersion = TEV_VERSION;
  expected.platformVersion = platformVersion;
  expected.commandLine = {"HUB", "run"};
  expected.product = "NVX";
  expected.productVersion = "2.6.0";
  expected.path = "/srv/site/bin/";
  expected.cores = UsableCores();
  for (const bool isFull : {false, true}) {
    expected.sleep = isFull ? "full" : "early";
    EXPECT_EQ(RecordLine(expected), RecordLine(MakeRunHead(clock, "/srv/site/bin/", {"HUB", "run"},
                                                           {"NVX", "2.6.0"}, isFull)));
  }
}

}  // namespace
