// A broken heap and a broken stack. Not built with sanitizers, which replace the heap and handle
// signals themselves.

#include <gmock/gmock.h>

#include "tests/reference/CrashTest.h"

namespace {

using testing::HasSubstr;

TEST(Crash, StackIsWrittenThoughTheHeapIsLocked) {
  const ProgramEnd program = End("broken_heap");
  EXPECT_EQ("signal 6; reported signal 6 at code: SIGABRT: abort() was called; report complete",
            Summary(program));
  EXPECT_THAT(program.errors, HasSubstr("Ways.cpp:"));
  const std::size_t first = program.errors.find("Ways.cpp:");
  EXPECT_EQ(first, program.errors.rfind("Ways.cpp:")) << "a line that was written twice";
}

TEST(Crash, StackThatCannotBeReadCutsOnlyTheStackShort) {
  const ProgramEnd program = End("broken_stack");
  EXPECT_EQ("signal 11; reported signal 11 at code: SIGSEGV; report complete", Summary(program));
  EXPECT_THAT(program.errors, HasSubstr("BreakTheStack() at "));
  EXPECT_THAT(program.errors, HasSubstr("\n... the rest of the stack cannot be read\n"));
}

}  // namespace
