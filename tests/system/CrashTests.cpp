// Plugins whose code ends the process: HUB names them, and never ends with status 0.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/HowItEnds.h"
#include "tests/system/MadeProduct.h"
#include "tests/system/RunToTheCrash.h"

using nlohmann::json;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;

namespace {

TEST(Crash, OfInitNamesThePluginThePhaseAndForHowLong) {
  const HubResult result = RunToTheCrash("init_crashes", NullPointerSentence("in Init"));
  EXPECT_THAT(result.errors, HasSubstr(StackBegin("Init")));
  ExpectEndedByMemoryFault(result);
}

TEST(Crash, OfUnInitNamesThePhase) {
  const HubResult result = RunToTheCrash("uninit_crashes", NullPointerSentence("in UnInit"));
  EXPECT_THAT(result.errors, HasSubstr(StackBegin("UnInit")));
  ExpectEndedByMemoryFault(result);
}

TEST(Crash, ByAbortEndsWithItsStatus) {
  ExpectEndedByAbort(RunToTheCrash("init_aborts", kAbortSentence));
}

TEST(Crash, ByTerminateSaysWhatWasThrown) {
  const HubResult result = RunToTheCrash("init_terminates", "");
  EXPECT_THAT(result.errors, HasSubstr("nobody catches this"));
  ExpectEndedByAbort(result);
}

TEST(Crash, WithALongTextStillNamesThePluginAndIsAWholeLine) {
  const HubResult result = RunToTheCrash("init_throws_a_long_text", "");
  EXPECT_THAT(result.errors, HasSubstr("xxx in bad.server, in Init for 0."));
  ExpectEndedByAbort(result);
}

TEST(Crash, ByExitIsNeverASuccess) {
  EXPECT_EQ(4, RunToTheCrash("init_exits", "").status);
  EXPECT_EQ(4, RunToTheCrash("init_exits_at_once", "").status);
}

TEST(Crash, OnAThreadOfThePluginsOwnNamesThePlugin) {
  const HubResult result = RunToTheCrash("thread_crashes", "");
  EXPECT_THAT(result.errors, HasSubstr("in bad.server, on a thread of its own"));
  ExpectEndedByMemoryFault(result);
}

TEST(Crash, ByAnExceptionOnAThreadOfThePluginsOwnNamesThePlugin) {
  const HubResult result = RunToTheCrash("thread_throws", "");
  EXPECT_THAT(result.errors,
              HasSubstr(R"(nobody catches "this\ in bad.server, on a thread of its own)"));
  ExpectEndedByAbort(result);
}

TEST(Crash, InCodeThatWasUnmappedIsReportedAsSuch) {
  MadeProduct product;
  product.Plugin("bad.server", "thread_outlives_the_library");
  // Keeps the process alive until the thread returns to code of bad.server, which is unmapped.
  product.Plugin("hangs.server", "uninit_hangs");
  const HubResult result = product.RunUntilUp("");
  EXPECT_THAT(result.errors, HasSubstr("in code of bad.server, whose library was unmapped"));
  ExpectEndedByMemoryFault(result);
}

/// What HUB prints on standard output when `fixture` ends the process.
HubResult OutputOfTheCrash(const std::string& fixture, const std::string& format) {
  MadeProduct product;
  return AddAmongOthers(product, fixture).Run(format + " --no-record");
}

TEST(Crash, LeavesAWholeObjectThatNamesThePlugin) {
  const HubResult result = OutputOfTheCrash("init_crashes", "--json");
  ExpectEndedByMemoryFault(result);
  const json run = result.Json();
  EXPECT_EQ("crashed", run["status"]);
  EXPECT_THAT(run["sentence"], HasSubstr("crashed: " + NullPointerSentence("in Init")));
  EXPECT_EQ(nullptr, run["exitStatus"]);
  ASSERT_EQ(3U, run["plugins"].size());
  EXPECT_EQ("bad.server", run["plugins"][1]["id"]);
  EXPECT_EQ("in-init", run["plugins"][1]["state"]);
  EXPECT_EQ(run["sentence"], "crashed: " + run["plugins"][1]["reason"].get<std::string>());
}

TEST(Crash, ByExitLeavesAnObjectWithItsStatus) {
  for (const std::string fixture : {"init_exits", "init_exits_at_once"}) {
    const HubResult result = OutputOfTheCrash(fixture, "--json");
    EXPECT_EQ(4, result.status);
    EXPECT_EQ("crashed", result.Json()["status"]);
    EXPECT_EQ(4, result.Json()["exitStatus"]);
  }
}

TEST(Crash, IsTheLastEvent) {
  const std::vector<json> events = OutputOfTheCrash("init_aborts", "--events").Events();
  ASSERT_FALSE(events.empty());
  EXPECT_EQ("crash", events.back()["event"]);
  EXPECT_EQ("start", events.back()["phase"]);
  EXPECT_EQ("bad.server", events.back()["plugin"]);
  EXPECT_THAT(events.back()["text"], HasSubstr(kAbortSentence));
}

TEST(Crash, WithAQuoteInItsWordsLeavesAnEventAllTheSame) {
  const std::vector<json> events = OutputOfTheCrash("thread_throws", "--events").Events();
  ASSERT_FALSE(events.empty());
  EXPECT_EQ("crash", events.back()["event"]);
  EXPECT_THAT(events.back()["text"], HasSubstr(R"(nobody catches "this\ in bad.server)"));
}

TEST(Crash, IsTheLastLineOfTheTable) {
  const HubResult result = OutputOfTheCrash("init_crashes", "");
  EXPECT_THAT(result.output, HasSubstr("\nbad.server  NOT RETURNED"));
  const std::size_t last = result.output.rfind('\n', result.output.size() - 2) + 1;
  EXPECT_THAT(result.output.substr(last),
              MatchesRegex("crashed: .* in bad.server, in Init for .*\n"));
}

/// The output of the run after a run that crashed. `arguments`: of the run that crashed.
std::string NextRunOutput(const std::string& arguments) {
  TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  MadeProduct product;
  product.Plugin("bad.server", "init_crashes").Run(arguments, settings);
  product.Plugin("bad.server", "well_behaved");
  const HubResult next = product.RunUntilUp("", settings);
  EXPECT_EQ(0, next.status) << next.errors;
  const HubResult after = product.RunUntilUp("", settings);
  EXPECT_THAT(after.output, testing::Not(HasSubstr("the last run")));
  return next.output;
}

constexpr char kRecalled[] =
    "note: the last run of this product, begun .*, ended so: .* in bad.server, in Init for .*";

TEST(Crash, IsRecalledByTheNextRunOfTheProduct) {
  EXPECT_THAT(NextRunOutput(""),
              ContainsRegex(std::string(kRecalled) + " \\(its record: .*jsonl\\)"));
}

TEST(Crash, IsRecalledWhereverItsRecordLies) {
  const TemporaryFolder folder;
  const std::string record = LocalFromPath(folder.Path() / "run.jsonl");
  EXPECT_THAT(NextRunOutput("--record \"" + record + "\""), ContainsRegex(kRecalled));
}

TEST(Crash, IsRecalledThoughTheNextRunReplacesItsRecord) {
  MadeProduct product;
  const TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  settings.record = state.Path() / "run.jsonl";
  product.Plugin("bad.server", "init_crashes").Run("", settings);
  const HubResult next = product.Plugin("bad.server").RunUntilUp("", settings);
  EXPECT_THAT(next.output,
              ContainsRegex(std::string(kRecalled) + " \\(this run replaces its record\\)"));
}

TEST(Crash, IsRecalledThoughItKeptNoRecord) {
  EXPECT_THAT(NextRunOutput("--no-record"),
              ContainsRegex(std::string(kRecalled) + " \\(it kept no record\\)"));
}

}  // namespace
