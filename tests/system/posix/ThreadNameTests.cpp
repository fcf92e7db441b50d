// Not built with a sanitizer: that of threads has one of its own, named as the process.

#include <gtest/gtest.h>

#include <string>

#include "tests/system/HubProcess.h"
#include "tests/system/MadeProduct.h"
#include "tests/system/posix/ThreadsOf.h"

namespace {

constexpr const char* kAllThreads = "HUB errors frame hangs.server output platform run ";

std::string NamesOfThreads(int process) {
  std::string names;
  for (const auto& thread : ThreadsOf(process)) names += thread.first + " ";
  return names;
}

TEST(Threads, AreNamedAfterThePluginWhoseCodeTheyRun) {
  MadeProduct product;
  product.Plugin("hangs.server", "init_hangs");
  HubProcess hub(product.Arguments("--stop-timeout 0"));
  ASSERT_TRUE(hub.AwaitRecord("init-begin"));
  std::string names;
  // A thread names itself when it first runs, which may be later than the plugin's Init.
  hub.Await([&] { return names = NamesOfThreads(hub.Id()); }, kAllThreads);
  EXPECT_EQ(kAllThreads, names);
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_EQ(4, hub.Wait().status);
}

}  // namespace
