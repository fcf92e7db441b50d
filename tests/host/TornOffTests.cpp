#include <gtest/gtest.h>

#include "host/RunRecord.h"

namespace {

FlightRecord Record(std::vector<RunEvent::Kind> kinds) {
  FlightRecord record;
  for (const RunEvent::Kind kind : kinds) {
    RunEvent event;
    event.kind = kind;
    event.text = "SIGSEGV in a.server";
    record.events.push_back(event);
  }
  return record;
}

TEST(TornOff, IsNoRunThatHasAnEnd) {
  EXPECT_EQ(std::nullopt, TornOff(Record({RunEvent::Kind::kUp, RunEvent::Kind::kEnd})));
}

TEST(TornOff, IsARunThatCrashedOrHasNoLastWord) {
  EXPECT_EQ("so: SIGSEGV in a.server",
            TornOff(Record({RunEvent::Kind::kUp, RunEvent::Kind::kCrash})));
  EXPECT_EQ("without a last word: it was killed, or the machine went down",
            TornOff(Record({RunEvent::Kind::kUp})));
  EXPECT_EQ("without a last word: it was killed, or the machine went down", TornOff(Record({})));
}

}  // namespace
