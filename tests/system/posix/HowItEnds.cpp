#include "tests/system/HowItEnds.h"

#include <gtest/gtest.h>
#include <signal.h>

const char* const kNullPointerSentence = "SIGSEGV at address 0x0 in bad.server, in Init for 0.";
const char* const kAbortSentence = "SIGABRT: abort() was called in bad.server, in Init for 0.";

void ExpectEndedByMemoryFault(const HubResult& result) {
  EXPECT_EQ(SIGSEGV, result.signal);
}

void ExpectEndedByAbort(const HubResult& result) {
  EXPECT_EQ(SIGABRT, result.signal);
}
