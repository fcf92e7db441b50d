#include "tests/system/HowItEnds.h"

#include <gtest/gtest.h>

#include <cstdint>

const char* const kAbortSentence = "SIGABRT: abort() was called in bad.server, in Init for 0.";

std::string NullPointerSentence(const std::string& phase) {
  return "exception 0xc0000005: access violation at address 0x0 in bad.server, " + phase +
         " for 0.";
}

std::string StackBegin(const std::string& function) {
  return "\n#0 " + function + "+0x";
}

void ExpectEndedByMemoryFault(const HubResult& result) {
  EXPECT_EQ(0xC0000005U, static_cast<std::uint32_t>(result.status));
}

void ExpectEndedByAbort(const HubResult& result) {
  EXPECT_EQ(0xC0000409U, static_cast<std::uint32_t>(result.status));
}
