// A broken heap; not under sanitizers, which bring a heap of their own.

#include <gmock/gmock.h>

#include "tests/reference/CrashTest.h"

namespace {

TEST(Crash, StackIsWrittenThoughTheHeapIsLocked) {
  const ProgramEnd program = End("broken_heap");
  EXPECT_EQ("signal 6; reported signal 6 at code: SIGABRT: abort() was called; report complete",
            Summary(program));
  EXPECT_THAT(program.errors, testing::HasSubstr("Ways.cpp:"));
  const std::size_t first = program.errors.find("Ways.cpp:");
  EXPECT_EQ(first, program.errors.rfind("Ways.cpp:")) << "a line that was written twice";
}

}  // namespace
