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

RunHead Head() {
  RunHead head;
  head.hubVersion = "1.0";
  head.frameVersion = "1.1";
  head.platformVersion = "1.2";
  head.pid = 7;
  head.host = "harbour";
  head.path = "/srv/site/bin/";
  return head;
}

TEST(HeadLine, NamesVersionsProcessProductFolderAndCommandLine) {
  RunHead head = Head();
  head.product = "NVX";
  head.productVersion = "2.6.0";
  head.commandLine = {"HUB", "run", "my folder", "", "a\"b", "a'b", "a\tb"};
  EXPECT_EQ(
      "HUB 1.0, frame 1.1, platform 1.2, pid 7 on harbour, product NVX 2.6.0 in /srv/site/bin/: "
      "HUB run \"my folder\" \"\" \"a\"b\" \"a'b\" \"a\tb\"",
      HeadLine(head));
}

TEST(HeadLine, SaysWhenTheProductHasNoName) {
  EXPECT_EQ(
      "HUB 1.0, frame 1.1, platform 1.2, pid 7 on harbour, product (without a name) in "
      "/srv/site/bin/: ",
      HeadLine(Head()));
}

}  // namespace
