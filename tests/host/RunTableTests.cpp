#include "host/RunTable.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/host/RunBuilder.h"
#include "workbench/output/Text.h"

namespace {

const Verdict kDegradedVerdict = {"degraded", kDegraded, "degraded: said in words"};

RunBuilder FourPlugins() {
  RunBuilder run;
  for (const char* id : {"fine", "failed", "gone", "stays"}) run.Plugin(id);
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
  run.Started("fine", 12).InitFailed("failed", "its Init returned false");
  run.NotLoaded("gone", "there is no file").Started("stays");
  run.Phase(RunEvent::Kind::kPhaseEnd, RunPhase::kStart);
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStop);
  run.StopRefused("stays", "its UnInit returned false").Stopped("fine").Stopped("failed", 2);
  run.Phase(RunEvent::Kind::kPhaseEnd, RunPhase::kStop);
  return run;
}

TEST(Table, ShowsWhatNeedsAttentionFirstAndTheVerdictLast) {
  EXPECT_EQ(
      "Plugin     Start               Init   Stop              UnInit   Reason\n"
      "------------------------------------------------------------------\n"
      "failed     INIT FAILED         7 ms   stopped             2 ms   its Init returned false\n"
      "gone       NOT LOADED                 -                          there is no file\n"
      "stays      started             5 ms   STOP REFUSED        4 ms   its UnInit returned false\n"
      "fine       started            12 ms   stopped             3 ms\n"
      "------------------------------------------------------------------\n"
      "4 plugins  total              16 ms   total              10 ms\n"
      "degraded: said in words\n",
      RunTable(FourPlugins().State(), kDegradedVerdict, {}));
}

TEST(Table, SaysHowFarEachStartAndStopCame) {
  RunBuilder run;
  for (const char* id : {"up", "early", "loads", "inits", "unmaps", "stops", "passed", "unseen"}) {
    run.Plugin(id);
  }
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
  run.Ready("early").Loading("loads").InInit("inits").Started("up").Started("unmaps");
  run.Started("stops").Started("passed").Started("unseen");
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStop);
  run.Unmapping("unmaps").InUnInit("stops").NothingToStop("passed").StoppedUnseen("unseen");
  EXPECT_EQ(
      "Plugin     Start               Init   Stop              UnInit   Reason\n"
      "------------------------------------------------------------------\n"
      "early      NEVER BEGUN                -\n"
      "loads      NOT RETURNED               -\n"
      "inits      NOT RETURNED               -\n"
      "unmaps     started             5 ms   NOT UNMAPPED        3 ms\n"
      "stops      started             5 ms   NOT RETURNED\n"
      "up         started             5 ms   -\n"
      "passed     started             5 ms   -\n"
      "unseen     started             5 ms   -\n"
      "------------------------------------------------------------------\n"
      "8 plugins  total                      total\n"
      "degraded: said in words\n",
      RunTable(run.State(), kDegradedVerdict, {}));
}

TEST(Table, WrapsReasonsToTheTerminalsWidth) {
  const TableStyle narrow{70, false, false};
  const std::string table = RunTable(FourPlugins().State(), kDegradedVerdict, narrow);
  EXPECT_NE(std::string::npos,
            table.find("gone       NOT LOADED                 -\n    there is no file\n"));
  const TableStyle wide{89, false, false};
  const std::string wider = RunTable(FourPlugins().State(), kDegradedVerdict, wide);
  const std::string indent(65, ' ');
  EXPECT_NE(std::string::npos, wider.find("its UnInit returned\n" + indent + "false\n"));
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// A run with long names and reasons.
RunBuilder LongTexts() {
  RunBuilder run;
  const std::string ascii = std::string(90, 'a') + "end.server";
  std::string wide;
  for (int i = 0; i < 50; ++i) wide += "\u6d4b";
  run.Plugin(ascii).Plugin(wide).Plugin("short");
  run.NotLoaded(ascii, "/a/path/" + std::string(120, 'p') + " does not exist");
  run.InitFailed(wide, "its Init returned false, and its last own line is long").Started("short");
  return run;
}

const Verdict kLongVerdict = {"degraded", kDegraded,
                              "degraded: 1 of 3 plugins started; " + std::string(90, 'a') +
                                  "end.server was not loaded and more is said of this run"};

TEST(Table, IsNowhereWiderThanTheTerminal) {
  for (const std::size_t columns : {1U, 20U, 40U, 59U, 60U, 70U, 79U, 80U, 104U, 105U, 200U}) {
    for (const std::string& line :
         LinesOf(RunTable(LongTexts().State(), kLongVerdict, {columns, false, false}))) {
      EXPECT_LE(Columns(line), columns) << line;
    }
  }
}

TEST(Table, OfEightyColumnsCutsNamesAndKeepsItsCells) {
  EXPECT_EQ(
      "Plugin                    Start               Init   Stop              UnInit\n"
      "    Reason\n"
      "--------------------------------------------------------------------------------\n"
      "aaaaaaaaaaaaaaaaaaaaa...  NOT LOADED                 -\n"
      "    /a/path/pppppppppppppppppppppppppppppppppppppppppppppppppppppppppppppppppppp\n"
      "    pppppppppppppppppppppppppppppppppppppppppppppppppppp does not exist\n"
      "\u6d4b\u6d4b\u6d4b\u6d4b\u6d4b\u6d4b\u6d4b\u6d4b\u6d4b\u6d4b...   INIT FAILED         7 ms  "
      " -\n"
      "    its Init returned false, and its last own line is long\n"
      "short                     started             5 ms   -\n"
      "--------------------------------------------------------------------------------\n"
      "3 plugins                 total                      total\n"
      "degraded: 1 of 3 plugins started; aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\n"
      "    aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaend.server was not loaded and\n"
      "    more is said of this run\n",
      RunTable(LongTexts().State(), kLongVerdict, {80, false, false}));
}

TEST(Table, OfSixtyColumnsHasSmallerGaps) {
  const std::vector<std::string> lines =
      LinesOf(RunTable(LongTexts().State(), kLongVerdict, {60, false, false}));
  EXPECT_EQ("Plugin         Start             Init Stop            UnInit", lines.at(0));
  EXPECT_EQ("aaaaaaaaaaa... NOT LOADED             -", lines.at(3));
}

TEST(Table, ColorsEachLineOfAVerdict) {
  const std::string table = RunTable(FourPlugins().State(), kLongVerdict, {80, true, false});
  EXPECT_NE(std::string::npos,
            table.find("\x1b[0m\n\x1b[33m    more is said of this run\x1b[0m\n"));
}

TEST(Table, ColorsWhatNeedsAttentionAndTheVerdict) {
  RunBuilder run;
  run.Plugin("a").Plugin("b").NotLoaded("a", "x").Started("b");
  const std::string table = RunTable(run.State(), kDegradedVerdict, {0, true, false});
  EXPECT_NE(std::string::npos, table.find("\x1b[31ma  "));
  EXPECT_NE(std::string::npos, table.find("\nb  "));
  EXPECT_NE(std::string::npos, table.find("\x1b[33mdegraded: said in words\x1b[0m\n"));
  EXPECT_EQ(std::string::npos, RunTable(run.State(), kDegradedVerdict, {}).find('\x1b'));
}

RunBuilder ManyPlugins(int count) {
  RunBuilder run;
  for (int i = 0; i < count; ++i) {
    const std::string id = "plugin" + std::to_string(i);
    run.Plugin(id).Started(id).Stopped(id);
  }
  return run;
}

std::size_t Rows(const std::string& table) {
  std::size_t rows = 0;
  for (std::size_t at = 0; (at = table.find("\nplugin", at)) != std::string::npos; ++at) ++rows;
  return rows;
}

TEST(Table, FoldsWhatIsWellBeyondFortyPlugins) {
  const Verdict up = {"up", kOk, "up: all"};
  EXPECT_EQ(40U, Rows(RunTable(ManyPlugins(40).State(), up, {})));
  RunBuilder run = ManyPlugins(60);
  run.Plugin("plugin-last").NotLoaded("plugin-last", "x");
  const std::string table = RunTable(run.State(), up, {});
  EXPECT_EQ(40U, Rows(table));
  EXPECT_NE(std::string::npos,
            table.find("\nand 21 more plugins that need no attention (--all shows them)\n"));
  EXPECT_NE(std::string::npos, table.find("\nplugin-last  NOT LOADED"));
  EXPECT_EQ(61U, Rows(RunTable(run.State(), up, {0, false, true})));
  EXPECT_NE(std::string::npos,
            RunTable(ManyPlugins(41).State(), up, {})
                .find("\nand 1 more plugin that needs no attention (--all shows it)\n"));
}

TEST(Table, ShowsNamesWithWideCharactersInLineAndEscapesControlBytes) {
  RunBuilder run;
  run.Plugin("\u6d4b\u8bd5").Plugin("x\x1b[2Jy").Plugin("");
  const std::string table = RunTable(run.State(), kDegradedVerdict, {});
  EXPECT_NE(std::string::npos, table.find("\n\u6d4b\u8bd5       NEVER BEGUN"));
  EXPECT_NE(std::string::npos, table.find("\nx\\x1b[2Jy  NEVER BEGUN"));
  run.NotLoaded("", "\xc2\x9b");
  EXPECT_NE(
      std::string::npos,
      RunTable(run.State(), kDegradedVerdict, {}).find("-                          \\u009b\n"));
  const Verdict hostile = {"failed", kFrameFailed, "failed: \x1b[2J"};
  EXPECT_NE(std::string::npos, RunTable(run.State(), hostile, {}).find("\nfailed: \\x1b[2J\n"));
  EXPECT_NE(std::string::npos, table.find("\n(no ID)    NEVER BEGUN"));
}

}  // namespace
