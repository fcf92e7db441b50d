#include "host/ProductReading.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using Kind = FrameEvent::Kind;

FrameEvent Note(Kind kind, const std::string& reason = "") {
  FrameEvent note;
  note.kind = kind;
  note.reason = reason;
  return note;
}

std::string Said(const FrameEvent& note) {
  const std::optional<Finding> finding = FindingOf(note);
  if (!finding) return "nothing";
  EXPECT_EQ(Severity::kError, finding->severity);
  return finding->text;
}

TEST(FindingOfANote, IsWhatAFailedStepOfTheStopCosts) {
  EXPECT_EQ(
      "the local-procedure-call framework did not stop; the plugins were neither stopped nor freed",
      Said(Note(Kind::kLpcStopFailed)));
  EXPECT_EQ("there were no threads for the stop; the plugins were neither stopped nor freed",
            Said(Note(Kind::kNoPoolForStop)));
}

TEST(FindingOfANote, IsWhatAStepThrew) {
  EXPECT_EQ("a step of the frame ended with an exception: no disk",
            Said(Note(Kind::kStepThrew, "no disk")));
  EXPECT_EQ("a step of the frame ended with something that is no exception object",
            Said(Note(Kind::kStepThrewNoException)));
}

TEST(FindingOfANote, IsNoneForWhatIsSaidElsewhere) {
  for (const Kind kind : {Kind::kNoPoolForStart, Kind::kPlatformInitFailed, Kind::kTypeUnknown,
                          Kind::kPluginDropped, Kind::kInitRefused, Kind::kRequiredFileUnreadable,
                          Kind::kInitFailed, Kind::kFrameInitEnd}) {
    EXPECT_EQ("nothing", Said(Note(kind, "x")));
  }
}

TEST(StartFailure, IsTheFirstReasonThatTheFrameLogged) {
  EXPECT_EQ(std::nullopt, StartFailure({}));
  EXPECT_EQ(std::nullopt, StartFailure({Note(Kind::kTypeUnknown), Note(Kind::kInitRefused, "x")}));
  EXPECT_EQ("there are no threads for them",
            StartFailure({Note(Kind::kTypeUnknown), Note(Kind::kNoPoolForStart),
                          Note(Kind::kStepThrew, "no disk")}));
  EXPECT_EQ("no disk",
            StartFailure({Note(Kind::kStepThrew, "no disk"), Note(Kind::kNoPoolForStart)}));
  EXPECT_EQ("a step threw something that is no exception object",
            StartFailure({Note(Kind::kStepThrewNoException), Note(Kind::kStepThrew, "no disk")}));
}

TEST(FrameReason, IsTheFramesOwnUnlessAStepThrew) {
  EXPECT_EQ("Frame_Init failed and logged no reason", FrameReason({}));
  EXPECT_EQ("the frame refused the product: no plugins",
            FrameReason({Note(Kind::kInitRefused, "no plugins")}));
  EXPECT_EQ("the platform did not come up", FrameReason({Note(Kind::kPlatformInitFailed)}));
  EXPECT_EQ("Frame_Init ended with an exception: no disk",
            FrameReason({Note(Kind::kInitRefused, "x"), Note(Kind::kStepThrew, "no disk")}));
  EXPECT_EQ("Frame_Init threw something that is no exception object",
            FrameReason({Note(Kind::kStepThrewNoException)}));
}

}  // namespace
