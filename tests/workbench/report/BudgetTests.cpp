#include "workbench/report/BudgetFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/RunText.h"

namespace {

/// Why a budget is refused; empty when it is not.
std::string Refused(const std::string& text) {
  try {
    ReadBudget(text);
    return std::string();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// `end`: when the start of b ended, in milliseconds; "-": it did not.
std::string Compared(const std::string& budget, const std::string& end = "390") {
  RecordedRun run = RunFromText(R"(
    a:
    b:
    start 0 400
    a start 0 10 10 110 110
    b start 0 10 10 )" + end + " " +
                                end);
  RunEvent up;
  up.kind = RunEvent::Kind::kUp;
  up.milliseconds = 450;
  run.record.events.push_back(up);
  return BudgetText(CompareWithBudget(MakeTimeline(std::move(run)), ReadBudget(budget)), 1);
}

TEST(Budgets, AreKeptByWhatTakesNoLonger) {
  EXPECT_EQ("3 of 3 budgets kept\n",
            Compared(R"({"up": 450, "phases": {"start": 400}, "plugins": {"a": 100}})"));
}

TEST(Budgets, AreExceededOneLineEach) {
  EXPECT_EQ(
      "up: 450.0 ms, budget 449.0 ms, exceeded by 1.0 ms\n"
      "start: 400.0 ms, budget 399.5 ms, exceeded by 0.5 ms\n"
      "a: 100.0 ms, budget 60.0 ms, exceeded by 40.0 ms\n"
      "0 of 3 budgets kept\n",
      Compared(R"({"up": 449, "phases": {"start": 399.5}, "plugins": {"a": 60}})"));
}

TEST(Budgets, OfWhatWasNotMeasuredAreNotKept) {
  EXPECT_EQ(
      "start: not measured, budget 500.0 ms\n"
      "stop: not measured, budget 100.0 ms\n"
      "b: not measured, budget 100.0 ms\n"
      "gone: not measured, budget 100.0 ms\n"
      "0 of 4 budgets kept\n",
      Compared(R"({"phases": {"start": 500, "stop": 100}, "plugins": {"b": 100, "gone": 100}})",
               "-"));
}

TEST(Budgets, ThatAreWrongAreRefusedWithASentence) {
  EXPECT_EQ("it is no JSON", Refused("{"));
  EXPECT_EQ("it names nothing; there are up, phases and plugins", Refused("{}"));
  EXPECT_EQ("it is no object of names and milliseconds", Refused("[]"));
  EXPECT_EQ("\"plugins\" is no object of names and milliseconds", Refused(R"({"plugins": 5})"));
  EXPECT_EQ("\"start\" is no member of a budget; there are up, phases and plugins",
            Refused(R"({"start": 5})"));
  EXPECT_EQ(
      "no phase is named \"begin\"; there are frame-init, platform-start, start, frame-stop, stop, "
      "platform-stop and frame-uninit",
      Refused(R"({"phases": {"begin": 5}})"));
  EXPECT_EQ("the budget of \"a\" is no number of milliseconds from 0 up: \"5\"",
            Refused(R"({"plugins": {"a": "5"}})"));
  EXPECT_EQ("the budget of \"up\" is no number of milliseconds from 0 up: -1",
            Refused(R"({"up": -1})"));
  EXPECT_EQ("the budget of \"up\" is no number of milliseconds from 0 up: 2000000000",
            Refused(R"({"up": 2000000000})"));
}

}  // namespace
