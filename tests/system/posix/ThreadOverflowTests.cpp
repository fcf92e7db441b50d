// A stack overflow on a thread that a plugin has created. Not built with a sanitizer, which
// replaces pthread_create as our operating-system layer does.

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
