#include "tests/system/HowItEnds.h"

#include <gtest/gtest.h>
#include <signal.h>

const char* const kAbortSentence = "SIGABRT: abort() was called in bad.server, in Init for 0.";

std::string NullPointerSentence(const std::string& phase) {
  return "SIGSEGV at address 0x0 in bad.server, " + phase + " for 0.";
}

std::string StackBegin(const std::string& function) {
  return "\n#0 " + function + " at ";  // file and line
}

void ExpectEndedByMemoryFault(const HubResult& result) {
  EXPECT_EQ(SIGSEGV, result.signal);
}

void ExpectEndedByAbort(const HubResult& result) {
  EXPECT_EQ(SIGABRT, result.signal);
}
