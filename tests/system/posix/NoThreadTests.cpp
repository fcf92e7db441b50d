// Not built with a sanitizer, whose library must be loaded before the one that the test preloads.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/system/MadeProduct.h"

using testing::HasSubstr;
using testing::Not;

namespace {

TEST(StartWithoutThreads, FailsAndIsNeverUp) {
  // Of HUB's own: run, frame, output, errors, platform. The pool gets none.
  constexpr char kThreadsOfHub[] = "5";
  HubSettings settings;
  settings.environment = {{"LD_PRELOAD", TEV_FEW_THREADS}, {"TEV_THREADS", kThreadsOfHub}};
  MadeProduct product;
  const HubResult result = product.Plugin("a.server").Run("--start-timeout 20", settings);
  EXPECT_EQ(1, result.status) << result.errors;
  EXPECT_THAT(
      result.output,
      HasSubstr("\nfailed: the plugins could not be started: there are no threads for them"));
  EXPECT_THAT(result.output, Not(HasSubstr("Up after")));
}

}  // namespace
