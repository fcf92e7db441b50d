// An overflow of the stack of a thread that a plugin has created. Not under a sanitizer, which
// replaces the same function of the C library as HUB's own library does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/system/HowItEnds.h"
#include "tests/system/MadeProduct.h"

using testing::HasSubstr;

namespace {

TEST(Crash, ByAStackOverflowOnAThreadOfThePluginsIsReportedToo) {
  MadeProduct product;
  const HubResult result =
      product.Plugin("deep.server", "thread_overflows_the_stack").Run("--no-record");
  ExpectEndedByMemoryFault(result);
  EXPECT_THAT(result.errors, HasSubstr(": the stack overflowed in deep.server, on a thread of its "
                                       "own\n"));
  EXPECT_THAT(result.errors, HasSubstr("\n#0 Deeper"));
}

}  // namespace
