#include "workbench/shake/ShakeRun.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"

namespace {

/// The run of a record with these lines behind the head and the plugins a, b and c.
ShakeRun RunOf(const std::string& events) {
  std::string text = R"({"record":"head","schema":1,"run":"r","time":"2026-11-21T18:46:59.123Z",)"
                     R"("zone":"+00:00","ns":100,"pid":1,"host":"h","hubVersion":"1",)"
                     R"("frameVersion":"1","platformVersion":"1","commandLine":["HUB"],)"
                     R"("product":"NVX","productVersion":"1","path":"/p/bin","cores":2})"
                     "\n";
  for (const std::string id : {"a", "b", "c"}) {
    text += R"({"record":"plugin","id":")" + id +
            R"(","version":"1","kind":"server","library":"/p","dependsOn":[]})" + "\n";
  }
  text += R"({"record":"plugin","id":"d","version":"1","kind":"driver","library":"/p",)"
          R"("dependsOn":[]})"
          "\n";
  const TemporaryFolder folder;
  return MakeShakeRun(ReadFlightRecord(folder.Write("run.jsonl", text + events)));
}

/// A line of the record: "ns event" and its further members.
std::string Line(int ns, const std::string& event, const std::string& members) {
  return R"({"record":"event","event":")" + event + R"(","ns":)" + std::to_string(ns) +
         R"(,"thread":7,)" + members + "}\n";
}

/// "a ok 3-5", for each plugin that was started in one line.
std::string Outcomes(const ShakeRun& run) {
  const char* const kinds[] = {"unknown", "ok", "failed", "not-loaded", "crashed", "hung"};
  std::string text;
  for (const auto& [id, plugin] : run.plugins) {
    text += id + " " + kinds[static_cast<int>(plugin.kind)] + " " + std::to_string(plugin.begin) +
            "-" + std::to_string(plugin.end) + " " + plugin.reason + "\n";
  }
  return text;
}

TEST(ShakeRunOfARecord, HasEachPluginsStart) {
  const ShakeRun run = RunOf(
      Line(1'000'000, "phase-begin", R"("phase":"start")") +
      Line(2'000'000, "load-begin", R"("plugin":"a","task":1)") +
      Line(3'000'000, "init-begin", R"("plugin":"a")") +
      Line(4'000'000, "load-begin", R"("plugin":"b","task":2)") +
      Line(5'000'000, "load-end", R"("plugin":"b","result":"failed","reason":"no file")") +
      Line(6'000'000, "init-end", R"("plugin":"a","result":"ok","ms":3)") +
      Line(7'000'000, "init-begin", R"("plugin":"c")") +
      Line(9'000'000, "init-end", R"("plugin":"c","result":"failed","ms":2,"reason":"no word")"));
  EXPECT_EQ(
      "a ok 3000000-6000000 \n"
      "b not-loaded 4000000-5000000 no file\n"
      "c failed 7000000-9000000 no word\n",
      Outcomes(run));
  EXPECT_EQ(8'000'000, run.startNs);
}

TEST(ShakeRunOfARecord, NamesThePluginWhoseInitNeverReturned) {
  const ShakeRun run =
      RunOf(Line(1, "init-begin", R"("plugin":"a")") + Line(2, "stop-request", R"("text":"x")"));
  EXPECT_EQ("a hung 1-1 \nb unknown 0-0 \nc unknown 0-0 \n", Outcomes(run));
}

TEST(ShakeRunOfARecord, NamesThePluginThatCrashedAndNoOther) {
  const ShakeRun run =
      RunOf(Line(1, "init-begin", R"("plugin":"a")") + Line(2, "init-begin", R"("plugin":"b")") +
            Line(3, "crash", R"("plugin":"b","phase":"start","text":"SIGSEGV")"));
  EXPECT_EQ("a unknown 1-1 \nb crashed 2-2 SIGSEGV\nc unknown 0-0 \n", Outcomes(run));
}

TEST(ShakeRunOfARecord, LeavesOutACrashOfTheStop) {
  const ShakeRun run = RunOf(Line(1, "init-begin", R"("plugin":"a")") +
                             Line(2, "init-end", R"("plugin":"a","result":"ok","ms":0)") +
                             Line(3, "crash", R"("plugin":"a","phase":"stop","text":"SIGSEGV")"));
  EXPECT_EQ("a ok 1-2 \nb unknown 0-0 \nc unknown 0-0 \n", Outcomes(run));
}

}  // namespace
