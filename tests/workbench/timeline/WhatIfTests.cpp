#include "workbench/timeline/WhatIf.h"

#include <gtest/gtest.h>

#include "tests/support/RunText.h"

namespace {

constexpr char kProduct[] = R"(
    config:
    storage: config
    video: storage
    a-b: config
    a-b->c:)";

/// What the changes are read as, or the sentence.
std::string ReadAll(const std::vector<std::string>& texts) {
  const Timeline timeline = MakeTimeline(RunFromText(kProduct));
  const ParsedWhatIf parsed = ParseWhatIf(texts, timeline);
  if (!parsed.error.empty()) return parsed.error;
  std::string text;
  for (const WhatIfChange& change : parsed.changes) {
    text += std::to_string(static_cast<int>(change.kind)) + " " + std::to_string(change.number) +
            " " + timeline.plugins[change.plugin].id + " " + timeline.plugins[change.other].id +
            "; ";
  }
  return text;
}

std::string Read(const std::string& text) {
  return ReadAll({text});
}

TEST(WhatIf, ReadsEachKindOfChange) {
  EXPECT_EQ(
      "0 4.000000 config config; 1 0.000000 config config; 2 120.500000 video config; "
      "3 50.000000 storage config; 4 0.000000 video storage; 5 0.000000 video a-b; ",
      ReadAll({"workers=4", "poll=0", "video=120.5", "storage = 50%", "cut video->storage",
               " add video \u2192 a-b "}));
}

TEST(WhatIf, NamesThePluginThatWasProbablyMeant) {
  EXPECT_EQ("\"vdeo=0\": the run has no plugin \"vdeo\"; did you mean \"video\"?", Read("vdeo=0"));
  EXPECT_EQ("\"cut video->xyz\": the run has no plugin \"xyz\"", Read("cut video->xyz"));
}

TEST(WhatIf, ReportsAnEdgeThatIsNotThere) {
  EXPECT_EQ("\"cut config->video\": \"config\" does not depend on \"video\"",
            Read("cut config->video"));
  EXPECT_EQ(
      "\"cut config->storage\": \"config\" does not depend on \"storage\"; it is the "
      "other way round",
      Read("cut config->storage"));
}

TEST(WhatIf, ReportsAnEdgeThatIsThereAlready) {
  EXPECT_EQ("\"add video->storage\": \"video\" depends on \"storage\" already",
            Read("add video->storage"));
}

TEST(WhatIf, ReportsTheCycleThatAnEdgeWouldMake) {
  EXPECT_EQ("\"add config->video\": that makes a cycle: config -> video -> storage -> config",
            Read("add config->video"));
  EXPECT_EQ("\"add video->video\": that makes a cycle: video -> video", Read("add video->video"));
}

TEST(WhatIf, SeesWhatEarlierChangesHaveLeft) {
  EXPECT_EQ("4 0.000000 video storage; 5 0.000000 config video; ",
            ReadAll({"cut video->storage", "add config->video"}));
  EXPECT_EQ("\"cut video->storage\": \"video\" does not depend on \"storage\"",
            ReadAll({"cut video->storage", "cut video->storage"}));
}

TEST(WhatIf, ReportsWhatIsNoNumber) {
  const std::string workers = "the number of threads is a whole number from 1 to 1000000";
  for (const char* text :
       {"workers=0", "workers=1.5", "workers=x", "workers=", "workers=1000001"}) {
    EXPECT_EQ("\"" + std::string(text) + "\": " + workers, Read(text));
  }
  const std::string poll =
      "the milliseconds between two looks are a number from 1 to 1000000, or 0 for no waiting";
  for (const char* text : {"poll=-1", "poll=0.5", "poll=nan", "poll=1e3", "poll=1000001"}) {
    EXPECT_EQ("\"" + std::string(text) + "\": " + poll, Read(text));
  }
  const std::string work =
      "the work of a plugin is a number of milliseconds from 0 to 1000000000, or of percent from 0 "
      "to 10000";
  for (const char* text : {"video=-1", "video=10001%", "video=%", "video=1e9", "video=inf"}) {
    EXPECT_EQ("\"" + std::string(text) + "\": " + work, Read(text));
  }
}

TEST(WhatIf, ReportsWhatIsNoChange) {
  EXPECT_EQ(
      "\"video\": it is none of \"workers=4\", \"poll=0\", \"PLUGIN=120\", "
      "\"PLUGIN=50%\", \"cut A->B\" and \"add A->B\"",
      Read("video"));
  EXPECT_EQ("\"cut video\": an edge is written A->B: A depends on B", Read("cut video"));
}

TEST(WhatIf, EscapesWhatATerminalWouldActOn) {
  EXPECT_EQ("\"\\x1b[2J=0\": the run has no plugin \"\\x1b[2J\"", Read("\x1b[2J=0"));
}

}  // namespace
