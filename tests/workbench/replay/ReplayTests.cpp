// The product of stubs that is made from a recorded run.

#include "workbench/replay/Replay.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/RunText.h"
#include "tests/support/TemporaryFolder.h"
#include "workbench/replay/ReplayFiles.h"
#include "workbench/replay/ReplayNames.h"

namespace {

using Kind = RunEvent::Kind;
using Names = std::vector<std::string>;

RecordedRun RunOf(const std::string& text) {
  return RunFromText(text);
}

Replay ReplayOf(const std::string& text, const ReplayOptions& options = {}) {
  return MakeReplay(MakeTimeline(RunOf(text)), options);
}

RunEvent Crash(const std::string& plugin, const std::string& phase, std::int64_t milliseconds,
               const std::string& sentence) {
  RunEvent crash;
  crash.kind = Kind::kCrash;
  crash.plugin = plugin;
  crash.phase = phase;
  crash.nanoseconds = (milliseconds + 1000) * 1'000'000;  // a run's text begins at one second
  crash.text = sentence;
  return crash;
}

/// The lines of the stubs' file, without its comments.
std::string Behaviors(const Replay& replay) {
  const std::string text = BehaviorFile(replay).content;
  return text.substr(text.find('\n', text.find("exits.")) + 1);
}

std::string ContentOf(const Replay& replay, const std::string& path) {
  for (const ReplayFile& file : ReplayFiles(replay, "")) {
    if (file.path == path) return file.content;
  }
  return "no such file";
}

TEST(ReplayNames, KeepPortableIdsAndReplaceAllOthers) {
  EXPECT_EQ((Names{"a.server", "A-1_b"}), ReplayNames({"a.server", "A-1_b"}, false));
  for (const std::string id :
       {"", ".", "..", "../up", "a/b", "a\\b", "a..b", ".a", "a.", "a b", "a\nb", "nul", "COM1.x",
        "Portal.xml", "Portal.DATA", "\xC3\xA4", "a:b", "C:"}) {
    EXPECT_EQ(Names{"stub-1"}, ReplayNames({id}, false)) << id;
  }
  EXPECT_EQ(Names{std::string(100, 'a')}, ReplayNames({std::string(100, 'a')}, false));
  EXPECT_EQ(Names{"stub-1"}, ReplayNames({std::string(101, 'a')}, false));
}

TEST(ReplayNames, DifferAlsoWithoutRegardToCase) {
  EXPECT_EQ((Names{"a", "stub-2", "a.b"}), ReplayNames({"a", "A", "a.b"}, false));
  EXPECT_EQ((Names{"stub-2", "stub-2-x"}), ReplayNames({"stub-2", "/"}, false));
}

TEST(ReplayNames, OfAnAnonymousReplayAreNumbers) {
  Names many(10, "secret.server");
  many = ReplayNames(many, true);
  EXPECT_EQ("plugin-01", many.front());
  EXPECT_EQ("plugin-10", many.back());
}

TEST(Replay, HasTheRecordsDurationsAndResults) {
  EXPECT_EQ(
      "ok 20000 succeeds 3000 succeeds\n"
      "fails 5000 fails 0 succeeds\n"
      "throws 5000 throws 0 throws\n"
      "refuses 1000 succeeds 2000 fails\n",
      Behaviors(ReplayOf("ok:\nfails:\nthrows:\nrefuses:\n"
                         "start 0 100\n"
                         "ok start 0 0 0 20 20\n"
                         "fails start 0 0 0 5 5 failed its Init returned false\n"
                         "throws start 0 0 0 5 5 failed its Init threw: x\n"
                         "refuses start 0 0 0 1 1\n"
                         "stop 100 200\n"
                         "ok stop 100 100 100 103 103\n"
                         "fails stop 100 100 100 100 100\n"
                         "throws stop 100 100 100 100 100 refused its UnInit threw: x\n"
                         "refuses stop 100 100 100 102 102 refused its UnInit returned false\n")));
}

TEST(Replay, AddsTheTimeOfLoadingFromAMillisecondUpToInit) {
  EXPECT_EQ("a 30000 succeeds 0 succeeds\nb 20000 succeeds 0 succeeds\n",
            Behaviors(ReplayOf("a:\nb:\nstart 0 100\na start 0 0 10 30 30\n"
                               "b start 0 0 0.9 20.9 20.9\n")));
}

TEST(Replay, AddsTheTimeOfUnmappingToUnInit) {
  EXPECT_EQ("a 0 succeeds 7000 succeeds\n",
            Behaviors(ReplayOf("a:\nstart 0 1\na start 0 0 0 0 0\nstop 1 20\na stop 1 1 1 3 8\n")));
}

TEST(Replay, DividesDurationsByTheSpeed) {
  ReplayOptions options;
  options.speed = 10;
  const Replay replay = ReplayOf("a:\nstart 0 100\na start 0 0 0 50 50\nstop 100 101\n", options);
  EXPECT_EQ("a 5000 succeeds 0 succeeds\n", Behaviors(replay));
  EXPECT_EQ(Names{"Durations are divided by 10."}, replay.differences);
}

TEST(Replay, HangsWhereAPluginHadNotReturned) {
  const Replay replay = ReplayOf(
      "a:\nb:\nstart 0 10\na start 0 0 1 - -\nb start 0 0 0 5 5\nstop 20 30\nb stop 20 20 21 - "
      "-\n");
  EXPECT_EQ("a 1000 hangs 0 succeeds\nb 5000 succeeds 0 hangs\n", Behaviors(replay));
  EXPECT_EQ((Names{"The record ends before their Init had returned; here it never returns: a.",
                   "The record ends before their UnInit had returned; here it never returns: b."}),
            replay.differences);
}

TEST(Replay, SucceedsWhereALogDoesNotSayHowAPluginEnded) {
  RecordedRun run = RunOf("a:\nstart 0 9\na start 0 0 0 5 5\nstop 9 19\na stop 9 9 9 12 12\n");
  for (RunEvent& event : run.record.events) {
    if (event.kind == Kind::kCounted) event.result = RunEvent::Result::kNone;
  }
  const Replay replay = MakeReplay(MakeTimeline(run), {});
  EXPECT_EQ("a 5000 succeeds 3000 succeeds\n", Behaviors(replay));
  EXPECT_EQ((Names{"The log does not say how their Init ended; here it succeeds: a.",
                   "The log does not say how their UnInit ended; here it succeeds: a."}),
            replay.differences);
}

TEST(Replay, CrashesInThePluginThatCrashedAsItDid) {
  const std::string text = "a:\nstart 0 -\na start 0 0 5 - -\n";
  const auto endingOf = [&text](const std::string& sentence) {
    RecordedRun run = RunOf(text);
    run.record.events.push_back(Crash("a", RunPhase::kStart, 25, sentence));
    return Behaviors(MakeReplay(MakeTimeline(run), {}));
  };
  EXPECT_EQ("a 25000 segfaults 0 succeeds\n", endingOf("SIGSEGV at address 0x0 in a, in Init"));
  EXPECT_EQ("a 25000 segfaults 0 succeeds\n", endingOf("exception 0xC0000005: access violation"));
  EXPECT_EQ("a 25000 aborts 0 succeeds\n", endingOf("SIGABRT in a, in Init"));
  EXPECT_EQ("a 25000 aborts 0 succeeds\n", endingOf("an exception was not caught: X in a"));
  EXPECT_EQ("a 25000 exits 0 succeeds\n", endingOf("exit(0) in a, in Init for 0.0 s"));
}

TEST(Replay, SaysThatACrashInNoInitIsNotReplayed) {
  RecordedRun run = RunOf("a:\nstart 0 9\na start 0 0 0 5 5\nstop 9 9\n");
  run.record.events.push_back(Crash("a", "", 25, "SIGSEGV in a, on a thread of its own"));
  EXPECT_EQ(Names{"The recorded run ended by a crash in no plugin's Init or UnInit, which is not "
                  "replayed."},
            MakeReplay(MakeTimeline(run), {}).differences);
}

TEST(Replay, HasNoLibraryOrAnUnusableOneWhereNoneWasLoaded) {
  RecordedRun run = RunOf(
      "gone:\nbroken:\nstart 0 9\n"
      "gone start 0 0 - - 0 not-loaded\nbroken start 0 0 - - 0 not-loaded\n");
  run.record.plugins[1].librarySize = 7;
  const Replay replay = MakeReplay(MakeTimeline(run), {});
  EXPECT_EQ("", Behaviors(replay));
  EXPECT_EQ(Names{}, StubLibraries(replay));
  EXPECT_EQ("no such file", ContentOf(replay, "bin/gone.dll"));
  EXPECT_EQ("In the recorded run this library could not be loaded.\n",
            ContentOf(replay, "bin/broken.dll"));
}

TEST(Replay, LeavesOutWhatTheFrameDoesNotStart) {
  RecordedRun run = RunOf("a:\nd:\nstart 0 9\na start 0 0 0 5 5\nstop 9 9\n");
  run.record.plugins[1].kind = "driver";
  const Replay replay = MakeReplay(MakeTimeline(run), {});
  EXPECT_EQ(1U, replay.plugins.size());
  EXPECT_EQ(Names{"1 driver or executable is left out, which the frame does not start: d."},
            replay.differences);
}

TEST(ReplayFiles, DescribeThePluginsWithTheirDependencies) {
  RecordedRun run = RunOf("a: p\np:\nstart 0 9\n");
  run.record.plugins[0].version = "1.<&\">\x01";
  run.record.plugins[1].kind = "platform";
  run.record.head.product = "N<X";
  run.record.head.productVersion = "1.2.3";
  const Replay replay = MakeReplay(MakeTimeline(run), {});
  EXPECT_EQ(R"(<?xml version="1.0" encoding="UTF-8"?>
<ProductDescription>
  <Product>N&lt;X</Product>
  <Version>1.2.3</Version>
  <EditionConfig>Replay</EditionConfig>
  <Plugins>
    <Plugin ID="a" Version="1.&lt;&amp;&quot;&gt;\x01"/>
  </Plugins>
  <SubPlatforms>
    <SubPlatform ID="p" Version=""/>
  </SubPlatforms>
</ProductDescription>
)",
            ContentOf(replay, "Product.xml"));
  EXPECT_EQ(R"(<?xml version="1.0" encoding="UTF-8"?>
<Plugin>
  <Type>2</Type>
  <ID>a</ID>
  <Name>a</Name>
  <Version>1.&lt;&amp;&quot;&gt;\x01</Version>
  <IsDistributed>1</IsDistributed>
  <DependencyList>
    <Plugin ID="p" Version=""/>
  </DependencyList>
</Plugin>
)",
            ContentOf(replay, "bin/META_INFO/a/a.xml"));
  EXPECT_EQ((Names{"bin/a.dll", "bin/p.dll"}), StubLibraries(replay));
}

TEST(ReplayFiles, AreNoneForASubPlatformWithoutAnId) {
  RecordedRun run = RunOf("a:\nstart 0 9\n");
  PluginHead nameless;
  nameless.kind = "platform";
  run.record.plugins.push_back(nameless);
  const Replay replay = MakeReplay(MakeTimeline(run), {});
  EXPECT_EQ(Names{"bin/a.dll"}, StubLibraries(replay));
  EXPECT_NE(std::string::npos,
            ContentOf(replay, "Product.xml").find("<SubPlatform ID=\"\" Version=\"\"/>"));
}

TEST(ReplayFiles, OfAnAnonymousReplayHaveNoNameOfTheProduct) {
  RecordedRun run = RunOf("secret.a: secret/b\nsecret/b:\nstart 0 9\n");
  run.record.plugins[0].version = "secret";
  run.record.head.product = "secret";
  run.record.head.productVersion = "secret";
  run.record.plugins.push_back({"secret.driver", "driver", "", "", 1, {}});
  const Timeline timeline = MakeTimeline(run);
  ReplayOptions options;
  options.anonymous = true;
  const Replay replay = MakeReplay(timeline, options);
  EXPECT_EQ("PRODUCT", replay.product);
  EXPECT_EQ("1.0.0", replay.version);
  for (const ReplayFile& file :
       ReplayFiles(replay, ReplayDescription(replay, timeline, options, ""))) {
    EXPECT_EQ(std::string::npos, file.path.find("secret")) << file.path;
    EXPECT_EQ(std::string::npos, file.content.find("secret")) << file.content;
  }
}

TEST(StubBehavior, IsReadAsItWasWritten) {
  const TemporaryFolder folder;
  Replay replay = ReplayOf("a:\na.b:\nstart 0 9\na.b start 0 0 0 5 5 failed its Init threw: x\n");
  replay.busy = true;
  folder.Write("stubs.txt", BehaviorFile(replay).content);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      std::fopen((folder.Path() / "stubs.txt").string().c_str(), "rb"), &std::fclose);
  ASSERT_TRUE(file);
  const auto behavior = ReadBehavior(*file, "a.b");
  ASSERT_TRUE(behavior);
  EXPECT_EQ("a.b 5000 throws 0 succeeds\n", BehaviorLine("a.b", *behavior));
  EXPECT_TRUE(behavior->busy);
  std::rewind(file.get());
  EXPECT_FALSE(ReadBehavior(*file, "b"));
}

TEST(Fault, IsParsedOrRefusedWithASentence) {
  const auto refusal = [](const std::string& text) {
    try {
      ParseFault(text);
    } catch (const std::invalid_argument& error) {
      return std::string(error.what());
    }
    return std::string("accepted");
  };
  EXPECT_EQ(Fault::Kind::kHang, ParseFault("hang").kind);
  EXPECT_EQ(500, ParseFault("slow:500").milliseconds);
  EXPECT_EQ("\"burn\" is no fault; there are fail, hang, crash and slow:MILLISECONDS",
            refusal("burn"));
  for (const std::string text : {"slow:", "slow:x", "slow:-1", "slow:1.5", "slow:99999999999"}) {
    EXPECT_EQ("\"" + text + "\" needs whole milliseconds, at most a day: slow:500", refusal(text));
  }
}

TEST(Fault, ChangesWhatThePluginDoes) {
  const auto with = [](const std::string& fault) {
    Replay replay = ReplayOf("a:\nstart 0 9\na start 0 0 0 5 5\n");
    AddFault(replay.plugins[0], ParseFault(fault));
    return Behaviors(replay);
  };
  EXPECT_EQ("a 5000 fails 0 succeeds\n", with("fail"));
  EXPECT_EQ("a 5000 hangs 0 succeeds\n", with("hang"));
  EXPECT_EQ("a 5000 segfaults 0 succeeds\n", with("crash"));
  EXPECT_EQ("a 505000 succeeds 0 succeeds\n", with("slow:500"));
}

TEST(Fault, OfTheRecordedRunCanBeMended) {
  Replay replay = ReplayOf(
      "a:\nb:\nstart 0 9\na start 0 0 1 - -\nb start 0 0 0 5 5 failed its Init returned false\n");
  EXPECT_EQ(Names{"a hung or crashed in its Init in the recorded run; here it succeeds"},
            MendHangsAndCrashes(replay));
  EXPECT_EQ("a 1000 succeeds 0 succeeds\nb 5000 fails 0 succeeds\n", Behaviors(replay));
}

}  // namespace
