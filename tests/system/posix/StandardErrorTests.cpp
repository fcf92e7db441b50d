// A standard error that nobody reads blocks neither a run nor the report of a crash.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <string>

#include "tests/system/MadeProduct.h"
#include "tests/system/posix/ThreadsOf.h"
#include "tests/system/posix/UnreadPipe.h"

using testing::HasSubstr;

namespace {

/// Settings for a HUB whose standard error is this pipe, after it was filled.
HubSettings WithFullErrors(UnreadPipe& pipe) {
  pipe.Fill();
  HubSettings settings;
  settings.errors = pipe.Name();
  return settings;
}

TEST(StandardErrorThatNobodyReads, DelaysNeitherTheStopNorTheObject) {
  MadeProduct product;
  product.Plugin("a.server");
  const SiteCopy& site = product.Site();
  const std::string full = site.Path("full").string();
  std::filesystem::create_symlink("/dev/full", full);
  const std::string log = site.Path("hub.log").string();
  UnreadPipe pipe;
  // The lost record is reported on standard error when the run begins.
  HubProcess hub(product.Arguments("--json --log \"" + log + "\" --record \"" + full + "\""),
                 WithFullErrors(pipe));
  EXPECT_TRUE(hub.AwaitFile(log, "[host] Up after"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("stopped", result.Json()["plugins"][0]["state"]);
  EXPECT_THAT(result.Json()["sentence"], HasSubstr("cannot be written"));
}

TEST(StandardErrorThatNobodyReads, LeavesACrashItsObjectAndItsStatus) {
  MadeProduct product;
  UnreadPipe pipe;
  const HubResult result =
      product.Plugin("bad.server", "init_crashes").Run("--json --no-record", WithFullErrors(pipe));
  EXPECT_EQ(SIGSEGV, result.signal);
  EXPECT_EQ("crashed", result.Json()["status"]);
  EXPECT_EQ("bad.server", result.Json()["plugins"][0]["id"]);
}

/// Runs a product with a plugin that hangs in Init, and ends HUB by SIGQUIT, which `send` sends.
HubResult RunToSigquit(const std::function<int(const HubProcess& hub)>& send) {
  MadeProduct product;
  HubProcess hub(product.Plugin("hangs.server", "init_hangs").Arguments("--json"));
  EXPECT_TRUE(hub.AwaitRecord("init-begin"));
  EXPECT_EQ(0, send(hub));
  HubResult result = hub.Wait();
  EXPECT_EQ(SIGQUIT, result.signal);
  EXPECT_EQ("crashed", result.Json()["status"]);
  EXPECT_EQ("crashed: SIGQUIT sent by process " + std::to_string(getpid()),
            result.Json()["sentence"]);
  return result;
}

TEST(Crash, BySigquitFromOutsideLeavesTheWholeObject) {
  const HubResult result =
      RunToSigquit([](const HubProcess& hub) { return kill(hub.Id(), SIGQUIT); });
  EXPECT_EQ("in-init", result.Json()["plugins"][0]["state"]);
}

TEST(Crash, OfTheRunsOwnThreadStillLeavesAnObject) {
  const HubResult result = RunToSigquit([](const HubProcess& hub) {
    return tgkill(hub.Id(), ThreadsOf(hub.Id()).find("run")->second, SIGQUIT);
  });
  EXPECT_EQ(nullptr, result.Json()["plugins"]);
  EXPECT_THAT(result.Json()["record"], HasSubstr(".jsonl"));
}

}  // namespace
