// A standard error that nobody reads blocks neither a run nor the report of a crash.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <string>

#include "tests/system/MadeProduct.h"
#include "tests/system/posix/ThreadsOf.h"

using testing::HasSubstr;

namespace {

/// A full pipe that nobody reads.
class FullPipe {
 public:
  FullPipe() : m_name((m_folder.Path() / "pipe").string()) {
    EXPECT_EQ(0, mkfifo(m_name.c_str(), 0600));
    m_open = open(m_name.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const std::string page(4096, 'x');
    while (write(m_open, page.data(), page.size()) > 0) {
    }
  }
  ~FullPipe() { close(m_open); }
  FullPipe(const FullPipe&) = delete;
  FullPipe& operator=(const FullPipe&) = delete;

  const std::string& Name() const { return m_name; }

 private:
  TemporaryFolder m_folder;
  std::string m_name;
  int m_open = -1;
};

/// Runs HUB with a full pipe as standard error.
HubResult RunWithFullErrorPipe(MadeProduct& product, const std::string& arguments) {
  const FullPipe pipe;
  const TemporaryFolder folder;
  HubSettings settings;
  settings.program = "/bin/sh";
  const std::string command =
      "exec \"" TEV_HUB "\" " + product.Arguments(arguments) + " 2>\"" + pipe.Name() + "\"";
  return RunHub("\"" + folder.Write("command", command) + "\"", settings);
}

TEST(StandardErrorThatNobodyReads, DelaysNeitherTheStopNorTheObject) {
  MadeProduct product;
  product.Plugin("a.server");
  const std::string full = product.Site().Path("full").string();
  std::filesystem::create_symlink("/dev/full", full);
  // The lost record is reported on standard error when the run begins.
  const HubResult result =
      RunWithFullErrorPipe(product, "--json --seconds 0.5 --record \"" + full + "\"");
  EXPECT_EQ(3, result.status);
  EXPECT_EQ("stopped", result.Json()["plugins"][0]["state"]);
  EXPECT_THAT(result.Json()["sentence"], HasSubstr("cannot be written"));
}

TEST(StandardErrorThatNobodyReads, LeavesACrashItsObjectAndItsStatus) {
  MadeProduct product;
  const HubResult result =
      RunWithFullErrorPipe(product.Plugin("bad.server", "init_crashes"), "--json --no-record");
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
