#include "workbench/record/FlightRecord.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include "tests/support/FieldCount.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

using Kind = RunEvent::Kind;
using Result = RunEvent::Result;

/// The record's lines, by which heads, plugins and events are compared.
std::string Lines(const FlightRecord& record) {
  std::string lines = RecordLine(record.head) + "\n";
  for (const PluginHead& plugin : record.plugins) lines += RecordLine(plugin) + "\n";
  for (const RunEvent& event : record.events) lines += RecordLine(event) + "\n";
  return lines;
}

std::string Message(const fs::path& file) {
  try {
    ReadFlightRecord(file);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing was thrown";
}

RunHead Head() {
  RunHead head;
  head.run = "4f1c-77";
  head.time = "2026-11-21T18:46:59.123Z";
  head.zone = "+01:00";
  head.nanoseconds = 12345678901234567;
  head.pid = 77;
  head.host = "harbour";
  head.hubVersion = "1.0.0";
  head.frameVersion = "1.0.1";
  head.platformVersion = "1.0.2";
  head.commandLine = {"HUB", "run", "--bin", "C:\\site\\bin"};
  head.product = "NVX";
  head.productVersion = "2.6.1.15";
  head.path = "C:\\site\\bin";
  head.cores = 8;
  head.sleep = RunHead::kEarlySleep;
  return head;
}

constexpr char kHeadLine[] =
    R"({"record":"head","schema":1,"run":"4f1c-77","time":"2026-11-21T18:46:59.123Z",)"
    R"("zone":"+01:00","ns":12345678901234567,"pid":77,"host":"harbour","hubVersion":"1.0.0",)"
    R"("frameVersion":"1.0.1","platformVersion":"1.0.2",)"
    R"("commandLine":["HUB","run","--bin","C:\\site\\bin"],"product":"NVX",)"
    R"("productVersion":"2.6.1.15","path":"C:\\site\\bin","cores":8,"sleep":"early"})";

PluginHead Plugin() {
  PluginHead plugin;
  plugin.id = "map.server";
  plugin.kind = "server";
  plugin.version = "2.8.0";
  plugin.library = "/site/bin/map.server.dll";
  plugin.librarySize = 16384;
  plugin.dependsOn = {"config.server", "storage.server"};
  return plugin;
}

constexpr char kPluginLine[] =
    R"({"record":"plugin","id":"map.server","kind":"server","version":"2.8.0",)"
    R"("library":"/site/bin/map.server.dll","librarySize":16384,)"
    R"("dependsOn":["config.server","storage.server"]})";

/// An event with a value in every field; its line contains those of its kind.
RunEvent Event(Kind kind) {
  RunEvent event;
  event.kind = kind;
  event.nanoseconds = 1000;
  event.thread = 18446744073709551615U;
  event.phase = "start";
  event.plugin = "a";
  event.task = 4;
  event.milliseconds = 20;
  event.number = 3;
  event.result = Result::kOk;
  event.severity = Severity::kWarning;
  event.status = "degraded";
  event.totals = {6, 5, 4, 3, 2, 1};
  event.text = "because";
  return event;
}

/// An event in which every field that may be empty is empty.
RunEvent BareEvent(Kind kind) {
  RunEvent event = Event(kind);
  event.milliseconds = -1;
  event.phase.clear();
  event.plugin.clear();
  event.text.clear();
  return event;
}

struct EventLine {
  Kind kind;
  const char* whole;
  const char* bare;
};

constexpr EventLine kEventLines[] = {
    {Kind::kPhaseBegin, R"("phase-begin",@,"phase":"start"})", R"("phase-begin",@,"phase":""})"},
    {Kind::kPhaseEnd, R"("phase-end",@,"phase":"start","ms":20})", R"("phase-end",@,"phase":""})"},
    {Kind::kReady, R"("ready",@,"phase":"start","plugin":"a","waitedFor":"because"})",
     R"("ready",@,"phase":"","plugin":""})"},
    {Kind::kPosted, R"("posted",@,"task":4})", R"("posted",@,"task":4})"},
    {Kind::kTaskBegin, R"("task-begin",@,"task":4})", R"("task-begin",@,"task":4})"},
    {Kind::kLoadBegin, R"("load-begin",@,"plugin":"a","task":4})",
     R"("load-begin",@,"plugin":"","task":4})"},
    {Kind::kLoadEnd, R"("load-end",@,"plugin":"a","result":"ok","reason":"because"})",
     R"("load-end",@,"plugin":"","result":"ok"})"},
    {Kind::kInitBegin, R"("init-begin",@,"plugin":"a"})", R"("init-begin",@,"plugin":""})"},
    {Kind::kInitEnd, R"("init-end",@,"plugin":"a","result":"ok","ms":20,"reason":"because"})",
     R"("init-end",@,"plugin":"","result":"ok","ms":-1})"},
    {Kind::kUnInitBegin, R"("uninit-begin",@,"plugin":"a"})", R"("uninit-begin",@,"plugin":""})"},
    {Kind::kUnInitEnd, R"("uninit-end",@,"plugin":"a","result":"ok","ms":20,"reason":"because"})",
     R"("uninit-end",@,"plugin":"","result":"ok","ms":-1})"},
    {Kind::kCounted,
     R"("counted",@,"phase":"start","plugin":"a","result":"ok","count":3,"reason":"because"})",
     R"("counted",@,"phase":"","plugin":"","result":"ok","count":3})"},
    {Kind::kTaskEnd, R"("task-end",@,"task":4})", R"("task-end",@,"task":4})"},
    {Kind::kUp, R"("up",@,"ms":20})", R"("up",@,"ms":-1})"},
    {Kind::kStopRequest, R"("stop-request",@,"text":"because"})", R"("stop-request",@,"text":""})"},
    {Kind::kFinding, R"("finding",@,"severity":"warning","text":"because"})",
     R"("finding",@,"severity":"warning","text":""})"},
    {Kind::kCrash, R"("crash",@,"phase":"start","plugin":"a","text":"because"})",
     R"("crash",@,"text":""})"},
    {Kind::kEnd,
     R"("end",@,"status":"degraded","exitStatus":3,"totals":{"plugins":6,"started":5,)"
     R"("initFailed":4,"notLoaded":3,"stopped":2,"stopRefused":1},"text":"because"})",
     R"("end",@,"status":"degraded","exitStatus":3,"totals":{"plugins":6,"started":5,)"
     R"("initFailed":4,"notLoaded":3,"stopped":2,"stopRefused":1},"text":""})"}};

/// The line of an event: its common begin and `text`, in which "@" stands for time and thread.
std::string Expected(std::string text) {
  text.replace(text.find('@'), 1, R"("ns":1000,"thread":18446744073709551615)");
  return R"({"record":"event","event":)" + text;
}

class FlightRecords : public testing::Test {
 protected:
  /// Reads a record from `content`.
  FlightRecord Read(const std::string& content) {
    return ReadFlightRecord(folder.Write("run.jsonl", content));
  }
  FlightRecord ReadBehindHead(const std::string& content) {
    return Read(std::string(kHeadLine) + "\n" + content);
  }

  TemporaryFolder folder;
};

TEST_F(FlightRecords, HoldHeadAndPluginsAsTheyAre) {
  EXPECT_EQ(kHeadLine, RecordLine(Head()));
  EXPECT_EQ(kPluginLine, RecordLine(Plugin()));
  PluginHead missing = Plugin();
  missing.librarySize = -1;
  missing.dependsOn.clear();
  EXPECT_EQ(R"({"record":"plugin","id":"map.server","kind":"server","version":"2.8.0",)"
            R"("library":"/site/bin/map.server.dll","dependsOn":[]})",
            RecordLine(missing));
}

std::size_t Members(const std::string& line) {
  std::size_t members = 0;
  for (std::size_t at = 0; (at = line.find("\":", at)) != std::string::npos; ++at) ++members;
  return members;
}

TEST_F(FlightRecords, HoldEachFieldOfHeadsAndTotals) {
  EXPECT_EQ(FieldCount<RunHead>(), Members(kHeadLine) - Members(R"("record":,"schema":)"));
  EXPECT_EQ(FieldCount<PluginHead>(), Members(kPluginLine) - Members(R"("record":)"));
  EXPECT_EQ(FieldCount<RunTotals>(), Members(RecordLine(Event(Kind::kEnd))) -
                                         Members(R"("record":,"event":,"ns":,"thread":,"status":,)"
                                                 R"("exitStatus":,"totals":,"text":)"));
}

TEST_F(FlightRecords, HoldEachFieldOfAnEvent) {
  RunEvent event = Event(Kind::kPosted);
  // A new field does not compile here: give it a value, and a member that holds it.
  auto& [kind, nanoseconds, thread, phase, plugin, task, milliseconds, number, result, severity,
         status, totals, text] = event;
  std::tie(nanoseconds, thread, task) = std::make_tuple(101, 102U, 103U);
  std::tie(milliseconds, number) = std::make_tuple(104, 105);
  std::tie(phase, plugin, status, text) = std::make_tuple("106", "107", "108", "109");
  totals.plugins = 110;
  result = Result::kRefused;
  severity = Severity::kError;
  std::string lines;
  for (const EventLine& line : kEventLines) {
    kind = line.kind;
    lines += RecordLine(event);
  }
  for (const char* value : {":101,", ":102,", ":103}", ":104}", ":105,", R"("106")", R"("107")",
                            R"("108")", R"("109")", ":110,", R"("refused")", R"("error")"}) {
    EXPECT_NE(std::string::npos, lines.find(value)) << value;
  }
}

TEST_F(FlightRecords, HoldOfAnEventWhatItsKindFills) {
  for (const EventLine& line : kEventLines) {
    EXPECT_EQ(Expected(line.whole), RecordLine(Event(line.kind)));
    EXPECT_EQ(Expected(line.bare), RecordLine(BareEvent(line.kind)));
  }
}

TEST_F(FlightRecords, NameResultsAndSeverities) {
  RunEvent event = BareEvent(Kind::kLoadEnd);
  const std::pair<Result, const char*> results[] = {{Result::kOk, "ok"},
                                                    {Result::kFailed, "failed"},
                                                    {Result::kNotLoaded, "not-loaded"},
                                                    {Result::kRefused, "refused"}};
  for (const auto& [result, name] : results) {
    event.result = result;
    const std::string line = R"("load-end",@,"plugin":"","result":")" + std::string(name) + "\"}";
    EXPECT_EQ(Expected(line), RecordLine(event));
    EXPECT_EQ(result, ReadBehindHead(RecordLine(event)).events.at(0).result);
  }
  event = BareEvent(Kind::kFinding);
  const std::pair<Severity, const char*> severities[] = {
      {Severity::kNote, "note"}, {Severity::kWarning, "warning"}, {Severity::kError, "error"}};
  for (const auto& [severity, name] : severities) {
    event.severity = severity;
    const std::string line = R"("finding",@,"severity":")" + std::string(name) + R"(","text":""})";
    EXPECT_EQ(Expected(line), RecordLine(event));
    EXPECT_EQ(severity, ReadBehindHead(RecordLine(event)).events.at(0).severity);
  }
}

TEST_F(FlightRecords, ReplaceWhatIsNoUtf8AndKeepEachTextInItsLine) {
  RunEvent event = BareEvent(Kind::kStopRequest);
  event.text = "a\xff\n\"\\ä";
  EXPECT_EQ(Expected("\"stop-request\",@,\"text\":\"a\xef\xbf\xbd\\n\\\"\\\\ä\"}"),
            RecordLine(event));
}

TEST_F(FlightRecords, AreReadAsTheyWereWritten) {
  RecordWriter writer(folder / "run.jsonl");
  std::string expected = std::string(kHeadLine) + "\n" + kPluginLine + "\n";
  writer.Write(Head());
  writer.Write(Plugin());
  for (const EventLine& line : kEventLines) {
    for (const RunEvent& event : {Event(line.kind), BareEvent(line.kind)}) {
      writer.Write(event);
      expected += RecordLine(event) + "\n";
    }
  }
  EXPECT_EQ(expected, folder.Read("run.jsonl"));
  const FlightRecord record = ReadFlightRecord(folder / "run.jsonl");
  EXPECT_EQ(expected, Lines(record));
  EXPECT_EQ(0U, record.unreadableLines);
}

TEST_F(FlightRecords, WithoutASleepAreOfFullSleeps) {
  folder.Write("run.jsonl", "{\"record\":\"head\",\"schema\":1}\n");
  EXPECT_EQ("full", ReadFlightRecord(folder / "run.jsonl").head.sleep);
}

TEST_F(FlightRecords, CutAtAnyByteReadToTheirLastWholeLine) {
  std::string whole = std::string(kHeadLine) + "\n" + kPluginLine + "\n";
  for (const EventLine& line : kEventLines) whole += RecordLine(Event(line.kind)) + "\n";
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const std::string cut = whole.substr(0, size);
    folder.Write("run.jsonl", cut);
    if (size < std::string(kHeadLine).size()) {
      EXPECT_EQ(folder / "run.jsonl" + " is no flight record: its first line is not a head",
                Message(folder / "run.jsonl"));
      continue;
    }
    // A line without only its line feed is complete.
    const std::size_t lastEnd = cut.rfind('\n') == std::string::npos ? 0 : cut.rfind('\n') + 1;
    const bool wholeToTheEnd = size < whole.size() && whole[size] == '\n';
    const std::string expected = wholeToTheEnd ? cut + "\n" : cut.substr(0, lastEnd);
    const FlightRecord record = ReadFlightRecord(folder / "run.jsonl");
    ASSERT_EQ(expected, Lines(record)) << size;
    ASSERT_EQ(wholeToTheEnd || lastEnd == size ? 0U : 1U, record.unreadableLines) << size;
  }
}

TEST_F(FlightRecords, CountLinesThatCannotBeReadAndGoOn) {
  const std::string event = RecordLine(Event(Kind::kUp));
  const FlightRecord record = ReadBehindHead(
      "{\"record\":\"ev\n" + event + "\nnull\n[]\n\"record\"\n{}\n\n{\"record\":7}\n" +
      R"({"record":"event"})"
      "\n"
      R"({"record":"event","event":"later"})"
      "\n"
      R"({"record":"event","event":"up","ns":"x","thread":1,"ms":1})"
      "\n"
      R"({"record":"event","event":"up","ns":1.5,"thread":1,"ms":1})"
      "\n"
      R"({"record":"event","event":"stop-request","ns":1,"thread":1,"text":7})"
      "\n"
      R"({"record":"event","event":"load-end","ns":1,"thread":1,"plugin":"a"})"
      "\n"
      R"({"record":"event","event":"load-end","ns":1,"thread":1,"result":"later"})"
      "\n"
      R"({"record":"plugin","id":"a","dependsOn":"b"})"
      "\n" +
      event + "\n");
  EXPECT_EQ(std::string(kHeadLine) + "\n" + event + "\n" + event + "\n", Lines(record));
  EXPECT_EQ(14U, record.unreadableLines);
}

TEST_F(FlightRecords, PassOverMembersThatAreNotKnown) {
  const FlightRecord record =
      Read(R"({"record":"head","schema":1,"new":[1],"run":"r"})"
           "\n"
           R"({"record":"plugin","id":"a","new":{}})"
           "\n"
           R"({"record":"event","event":"task-end","ns":1,"thread":2,"task":3,"new":null})"
           "\n");
  EXPECT_EQ("r", record.head.run);
  EXPECT_EQ("a", record.plugins.at(0).id);
  EXPECT_EQ(3U, record.events.at(0).task);
  EXPECT_EQ(0U, record.unreadableLines);
}

TEST_F(FlightRecords, OfSeveralRunsInAFileAreRefused) {
  const std::string file = folder.Write("run.jsonl", std::string(kHeadLine) + "\n" + kHeadLine);
  EXPECT_EQ(file + " has the records of several runs; name a file for each", Message(file));
}

TEST_F(FlightRecords, OfAnotherSchemaAreRefused) {
  const std::string file = folder.Write("run.jsonl", R"({"record":"head","schema":2})"
                                                     "\n");
  EXPECT_EQ(file + " is a flight record of schema 2; this version reads schema 1", Message(file));
}

TEST_F(FlightRecords, WithoutAHeadAreRefused) {
  for (const std::string& content :
       {std::string(), std::string("\n"), std::string("text"), std::string("[]"),
        std::string(R"({"record":7})"), std::string(R"({"record":"head","schema":"1"})"),
        std::string(R"({"record":"head","schema":1,"pid":"x"})"), std::string(kPluginLine)}) {
    const std::string file = folder.Write("run.jsonl", content);
    EXPECT_EQ(file + " is no flight record: its first line is not a head", Message(file))
        << content;
  }
}

TEST_F(FlightRecords, ThatAreMissingAreAnErrorWithTheirName) {
  EXPECT_EQ(folder / "none.jsonl" + " cannot be opened: No such file or directory",
            Message(folder / "none.jsonl"));
}

TEST_F(FlightRecords, AreWrittenLineByLineAsTheyCome) {
  RecordWriter writer(folder / "run.jsonl");
  EXPECT_EQ("", folder.Read("run.jsonl"));
  writer.WriteLine("one");
  EXPECT_EQ("one\n", folder.Read("run.jsonl"));
  const std::string longLine(100000, 'x');
  writer.WriteLine(longLine);
  EXPECT_EQ("one\n" + longLine + "\n", folder.Read("run.jsonl"));
  EXPECT_EQ(0U, writer.LostLines());
  EXPECT_EQ(folder / "run.jsonl", writer.File());
}

TEST_F(FlightRecords, KeepWhatAnotherHandleAppends) {
  RecordWriter writer(folder / "run.jsonl");
  writer.WriteLine("one");
  std::ofstream(folder / "run.jsonl", std::ios::binary | std::ios::app) << "crash\n";
  writer.WriteLine("two");
  EXPECT_EQ("one\ncrash\ntwo\n", folder.Read("run.jsonl"));
}

TEST_F(FlightRecords, ReplaceAFileThatIsThere) {
  folder.Write("run.jsonl", "an earlier run\n");
  RecordWriter writer(folder / "run.jsonl");
  writer.WriteLine("one");
  EXPECT_EQ("one\n", folder.Read("run.jsonl"));
}

TEST_F(FlightRecords, ThatCannotBeWrittenAreAnErrorWithTheirName) {
  const std::string file = folder / "missing/run.jsonl";
  try {
    const RecordWriter writer(file);
    FAIL() << "it was opened";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ("the record cannot be written to " + file + ": No such file or directory",
              error.what());
  }
}

}  // namespace
