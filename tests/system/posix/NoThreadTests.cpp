// Not built with a sanitizer, whose library must be loaded before the one that the test preloads.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/system/MadeProduct.h"

using testing::HasSubstr;
using testing::Not;

namespace {

/// Settings for a HUB that can create only so many threads. Its own are: output, errors, run,
/// frame, check, platform.
HubSettings WithThreads(int threads) {
  HubSettings settings;
  settings.environment = {{"LD_PRELOAD", TEV_FEW_THREADS},
                          {"TEV_THREADS", std::to_string(threads)}};
  return settings;
}

TEST(StartWithoutThreads, FailsAndIsNeverUp) {
  MadeProduct product;
  const HubResult result = product.Plugin("a.server").Run("--start-timeout 20", WithThreads(6));
  EXPECT_EQ(1, result.status) << result.errors;
  EXPECT_THAT(
      result.output,
      HasSubstr("\nfailed: the plugins could not be started: there are no threads for them\n"));
  EXPECT_THAT(result.output, Not(HasSubstr("Up after")));
}

TEST(StartWithoutThreads, ForThePlatformItselfSaysWhyItDidNotStart) {
  MadeProduct product;
  const HubResult result = product.Plugin("a.server").Run("--json", WithThreads(5));
  EXPECT_EQ(1, result.status) << result.errors;
  EXPECT_EQ(
      "failed: the platform did not start: KPX_Start: no thread for the start: Resource "
      "temporarily unavailable",
      result.Json()["sentence"]);
  EXPECT_EQ(nullptr, result.Json()["CallbackResult"]);
}

TEST(StartThatDoesNotReturn, IsLeftBehindAfterTheStopsLimit) {
  MadeProduct product;
  HubSettings settings = WithThreads(5);
  settings.environment.emplace_back("TEV_THREADS_HANG", "1");
  const HubResult result =
      product.Plugin("a.server").Run("--start-timeout 0.5 --stop-timeout 0.5", settings);
  EXPECT_EQ(4, result.status);
  EXPECT_EQ(
      "HUB: 0.5 s have passed since the stop request: left behind: Frame_Start has not returned "
      "(stopped by --start-timeout 0.5)\n",
      result.errors);
}

}  // namespace
