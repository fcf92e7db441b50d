// How processes with the crash handler end, and what they report.

#include <gmock/gmock.h>

#include <map>
#include <string>

#include "tests/reference/CrashTest.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

std::string SummaryOf(const std::string& way) {
  return Summary(End(way));
}

TEST(Crash, BadAddressEndsBySignalWithItsStack) {
  const ProgramEnd program = End("bad_address");
  EXPECT_EQ("signal 11; reported signal 11 at code: SIGSEGV at address 0x10; report complete",
            Summary(program));
  EXPECT_THAT(StackLine(program, 0),
              MatchesRegex("#0 .*WriteToBadAddress\\(\\) at .*/ends_badly\\.cpp:[0-9]+ in "
                           "reference_ends_badly\\+0x[0-9a-f]+"));
  EXPECT_THAT(StackLine(program, 1), MatchesRegex("#1 main at .*/ends_badly\\.cpp:.*"));
}

TEST(Crash, CallOfANullFunctionNamesItsCaller) {
  const ProgramEnd program = End("null_function");
  EXPECT_EQ("signal 11; reported signal 11: SIGSEGV at address 0x0; report complete",
            Summary(program));
  EXPECT_EQ("#0 0x0 in no loaded library", StackLine(program, 0));
  EXPECT_THAT(StackLine(program, 1), HasSubstr("ends_badly.cpp:"));
}

TEST(Crash, OverflowOfTheStackIsReported) {
  for (const char* way : {"overflow", "overflow_main"}) {
    const ProgramEnd program = End(way);
    EXPECT_EQ(
        "signal 11; reported signal 11 at code: SIGSEGV at address N: the stack overflowed; "
        "report complete",
        Summary(program));
    EXPECT_THAT(program.errors, HasSubstr("Recurse("));
    EXPECT_THAT(program.errors, HasSubstr("\n... more callers\n"));
  }
}

TEST(Crash, EveryFatalSignalIsReportedByName) {
  const std::map<int, std::string> signals = {
      {3, "SIGQUIT"},  {4, "SIGILL"},   {5, "SIGTRAP"},  {7, "SIGBUS"},   {8, "SIGFPE"},
      {10, "SIGUSR1"}, {12, "SIGUSR2"}, {14, "SIGALRM"}, {24, "SIGXCPU"}, {26, "SIGVTALRM"},
      {27, "SIGPROF"}, {29, "SIGIO"},   {31, "SIGSYS"}};
  for (const auto& [number, name] : signals) {
    const std::string signal = "signal " + std::to_string(number);
    EXPECT_EQ(signal + "; reported " + signal + " at code: " + name + "; report complete",
              SummaryOf(name));
  }
}

TEST(Crash, SignalFromOutsideIsReportedWithItsSender) {
  EXPECT_EQ("signal 11; reported signal 11 at code: SIGSEGV sent by N; report complete",
            SummaryOf("signal_from_outside"));
}

TEST(Crash, AbortEndsBySignal) {
  EXPECT_EQ("signal 6; reported signal 6 at code: SIGABRT: abort() was called; report complete",
            SummaryOf("abort"));
}

TEST(Crash, UncaughtExceptionIsReportedOnceWithTypeAndText) {
  const ProgramEnd program = End("throw");
  EXPECT_EQ(
      "signal 6; reported terminate 6: an exception was not caught: "
      "(anonymous namespace)::Refusal: two\\x0alines; report complete",
      Summary(program));
  EXPECT_THAT(program.errors, HasSubstr("Throw() at "));
}

TEST(Crash, UncaughtNumberIsReportedByItsType) {
  EXPECT_EQ("signal 6; reported terminate 6: an exception was not caught: int; report complete",
            SummaryOf("throw_number"));
}

TEST(Crash, TerminateWithoutAnExceptionIsReported) {
  EXPECT_EQ("signal 6; reported terminate 6: std::terminate() was called; report complete",
            SummaryOf("terminate"));
}

TEST(Crash, ExitIsReportedWithItsCallerAndTheStatusIsTheInstallers) {
  const ProgramEnd program = End("exit");
  EXPECT_EQ("status 4; reported exit 0 at code: exit(0); report complete", Summary(program));
  EXPECT_THAT(StackLine(program, 0), HasSubstr("ends_badly.cpp:"));
  EXPECT_EQ("status 4; reported exit 7 at code: exit(7); report complete",
            SummaryOf("exit_with_status"));
  EXPECT_EQ("status 4; reported exit 0 at code: exit(0); report complete",
            SummaryOf("exit_in_thread"));
  EXPECT_EQ("status 4; reported exit 0 at code: quick_exit(0); report complete",
            SummaryOf("quick_exit"));
}

TEST(Crash, ImmediateExitIsReported) {
  EXPECT_EQ("status 4; reported immediate exit 0 at code: _Exit(0); report complete",
            SummaryOf("immediate_exit"));
  EXPECT_EQ("status 4; reported immediate exit 9 at code: _exit(9); report complete",
            SummaryOf("immediate_exit_of_the_system"));
}

TEST(Crash, EndOfMainAndOfTheLastThreadAreExits) {
  EXPECT_EQ("status 4; reported exit 0 at code: exit(0); report complete",
            SummaryOf("return_from_main"));
  EXPECT_EQ("status 4; reported exit 0 at code: exit(0); report complete",
            SummaryOf("exit_of_last_thread"));
}

TEST(Crash, ExitWhoseCallerHasNoFrameHasTheWholeStack) {
  const ProgramEnd program = End("exit_of_no_frame");
  EXPECT_EQ("status 4; reported exit 3 at code: exit(3); report complete", Summary(program));
  EXPECT_THAT(program.errors, HasSubstr("ExitOfNoFrame() at "));
}

TEST(Crash, ExpectedExitKeepsItsStatusAndItsHandlers) {
  const ProgramEnd program = End("expected_exit");
  EXPECT_EQ("status 5", Summary(program));
  EXPECT_THAT(program.errors, HasSubstr("handlers called"));
}

TEST(Crash, TwoThreadsThatCrashAtOnceGiveOneReport) {
  for (int i = 0; i < 20; ++i) {
    ASSERT_THAT(SummaryOf("two_at_once"),
                MatchesRegex("signal 11; reported signal 11 at code: SIGSEGV at address 0x1[08]; "
                             "report complete"));
  }
}

TEST(Crash, CrashInTheReportEndsByTheFirstSignal) {
  for (const char* way : {"crash_in_report", "terminate_in_report", "exit_in_report"}) {
    EXPECT_EQ("signal 11; reported signal 11 at code: SIGSEGV at address 0x10; report complete",
              SummaryOf(way))
        << way;
  }
}

TEST(Crash, ReportThatHangsIsCutShort) {
  EXPECT_EQ("signal 11; reported signal 11 at code: SIGSEGV at address 0x10; report complete",
            SummaryOf("hang_in_report"));
}

TEST(Crash, ForkedChildrenEndAsByDefaultWithoutAReport) {
  const ProgramEnd program = End("ends_of_children");
  EXPECT_EQ("status 0", Summary(program));
  EXPECT_EQ(
      "child ended with status 6\nchild ended with status 6\nchild ended with status 6\n"
      "child ended with status 6\nchild ended by signal 6\nchild ended by signal 11\n"
      "child ended by signal 6\n",
      program.output);
  EXPECT_THAT(program.errors, HasSubstr("terminate called after throwing an instance of 'int'"));
}

TEST(Crash, ExecutedChildCanBeTerminatedAndStartsWithAnEmptyMask) {
  const ProgramEnd program = End("executed_child");
  EXPECT_EQ("status 0", Summary(program));
  EXPECT_EQ(
      "child ended by signal 15\nblocked 0\nSIGINT default\nSIGTERM default\nSIGHUP default\n"
      "SIGPIPE default\nfurther files 0\n",
      program.output);
}

}  // namespace
