#include "host/RunTable.h"

#include <gtest/gtest.h>

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
}

TEST(Table, ShowsNamesWithWideCharactersInLineAndEscapesControlBytes) {
  RunBuilder run;
  run.Plugin("\u6d4b\u8bd5").Plugin("x\x1b[2Jy").Plugin("");
  const std::string table = RunTable(run.State(), kDegradedVerdict, {});
  EXPECT_NE(std::string::npos, table.find("\n\u6d4b\u8bd5       NEVER BEGUN"));
  EXPECT_NE(std::string::npos, table.find("\nx\\x1b[2Jy  NEVER BEGUN"));
  const Verdict hostile = {"failed", kFrameFailed, "failed: \x1b[2J"};
  EXPECT_NE(std::string::npos, RunTable(run.State(), hostile, {}).find("\nfailed: \\x1b[2J\n"));
  EXPECT_NE(std::string::npos, table.find("\n(no ID)    NEVER BEGUN"));
}

}  // namespace
