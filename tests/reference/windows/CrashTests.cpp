// How processes with the crash handler end, and what they report. A stack overflow is not tested:
// Wine ends the thread, or hangs, before any handler runs.

#include <gmock/gmock.h>

#include <map>
#include <string>

#include "tests/reference/CrashTest.h"

namespace {

using testing::HasSubstr;

std::string SummaryOf(const std::string& way) {
  return Summary(End(way));
}

constexpr const char* kBadAddress =
    "status 3221225477; reported exception 3221225477 at code: exception N: access violation at "
    "address 0x10; report complete";

TEST(Crash, BadAddressEndsByTheExceptionWithItsStack) {
  const ProgramEnd program = End("bad_address");
  EXPECT_EQ(kBadAddress, Summary(program));
  EXPECT_THAT(StackLine(program, 0), HasSubstr(" in reference_ends_badly.exe+0x"));
}

TEST(Crash, CallOfANullFunctionNamesItsCaller) {
  const ProgramEnd program = End("null_function");
  EXPECT_EQ("#0 0x0 in no loaded library", StackLine(program, 0));
  EXPECT_THAT(StackLine(program, 1), HasSubstr(" in reference_ends_badly.exe+0x"));
}

TEST(Crash, OtherExceptionsAreReportedByTheirCode) {
  EXPECT_EQ(
      "status 3758096675; reported exception 3758096675 at code: exception N; report complete",
      SummaryOf("raise_exception"));
  EXPECT_EQ(
      "status 3221225620; reported exception 3221225620 at code: exception N: integer division "
      "by zero; report complete",
      SummaryOf("divide"));
}

TEST(Crash, AbortIsReported) {
  EXPECT_EQ(
      "status 3221226505; reported signal 22 at code: SIGABRT: abort() was called; report complete",
      SummaryOf("abort"));
}

TEST(Crash, UncaughtExceptionIsReportedOnceWithTypeAndText) {
  EXPECT_EQ(
      "status 3221226505; reported terminate 22 at code: an exception was not caught: "
      "(anonymous namespace)::Refusal: two\\x0alines; report complete",
      SummaryOf("throw"));
  EXPECT_EQ(
      "status 3221226505; reported terminate 22 at code: an exception was not caught: int; "
      "report complete",
      SummaryOf("throw_number"));
  EXPECT_EQ(
      "status 3221226505; reported terminate 22 at code: std::terminate() was called; "
      "report complete",
      SummaryOf("terminate"));
}

TEST(Crash, EveryExitIsReportedAndTheStatusIsTheInstallers) {
  const std::map<std::string, std::string> ways = {
      {"exit", "exit()"},
      {"exit_with_status", "exit()"},
      {"exit_in_thread", "exit()"},
      {"return_from_main", "exit()"},
      {"immediate_exit", "_exit() or ExitProcess()"},
      {"exit_process", "_exit() or ExitProcess()"},
  };
  for (const auto& [way, exit] : ways) {
    const ProgramEnd program = End(way);
    EXPECT_EQ("status 4; reported exit 0: " + exit + "; report complete", Summary(program)) << way;
    EXPECT_THAT(program.errors, HasSubstr(" in reference_ends_badly.exe+0x")) << way;
  }
}

TEST(Crash, ExpectedExitKeepsItsStatusAndItsHandlers) {
  const ProgramEnd program = End("expected_exit");
  EXPECT_EQ("status 5", Summary(program));
  EXPECT_THAT(program.errors, HasSubstr("handlers called"));
}

TEST(Crash, TwoThreadsThatCrashAtOnceGiveOneReport) {
  for (int i = 0; i < 10; ++i) {
    std::string other = kBadAddress;  // if the second thread crashed first
    other.replace(other.find("0x10"), 4, "0x18");
    ASSERT_THAT(SummaryOf("two_at_once"), testing::AnyOf(kBadAddress, other));
  }
}

TEST(Crash, CrashInTheReportEndsByTheFirstException) {
  for (const char* way : {"crash_in_report", "terminate_in_report", "exit_in_report"}) {
    EXPECT_EQ(kBadAddress, SummaryOf(way)) << way;
  }
}

TEST(Crash, ReportThatHangsIsCutShort) {
  EXPECT_EQ(kBadAddress, SummaryOf("hang_in_report"));
}

}  // namespace
