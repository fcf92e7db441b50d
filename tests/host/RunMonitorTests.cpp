#include "host/RunMonitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "reference/os/ProcessPath.h"
#include "reference/os/Threads.h"
#include "sdk/base/log.h"
#include "tests/reference/ThreadPoolTest.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr char kFrame[] = "platform.PluginFrame";

/// Logs `words` as the frame does.
void LogAsFrame(int level, const std::string& words, const char* module = kFrame) {
  IKPXFormatLog(level, module, "[CPluginManager::SinglePluginLoad]%s[..\\..\\src\\x.cpp(1)]",
                words.c_str());
}

/// A monitor and the record lines that it writes.
class Monitor : public ThreadPool {
 protected:
  /// The record's lines; the events' lines without the members that differ in each run.
  std::vector<std::string> Lines() {
    std::vector<std::string> lines;
    std::istringstream record(m_record);
    for (std::string line; std::getline(record, line);) {
      Json json = Json::parse(line);
      json.erase("record");
      json.erase("ns");
      json.erase("thread");
      lines.push_back(json.dump());
    }
    return lines;
  }

  /// The values of a member of all events, in their order.
  template <typename Value>
  std::vector<Value> OfEvents(const char* member) {
    std::vector<Value> values;
    std::istringstream record(m_record);
    for (std::string line; std::getline(record, line);) {
      const Json json = Json::parse(line);
      if (json["record"] == "event") values.push_back(json[member]);
    }
    return values;
  }

  static PluginHead Head(const std::string& id) {
    PluginHead head;
    head.id = id;
    head.kind = "server";
    return head;
  }

  std::string m_record;
  RunMonitor m_monitor{[this](const std::string& lines) { m_record += lines + "\n"; }};
};

using Texts = std::vector<std::string>;

TEST_F(Monitor, WritesTheHeadAndThePluginsFirst) {
  RunHead head;
  head.product = "NVX";
  m_monitor.Begin(head);
  m_monitor.SetPlugins({Head("a"), Head("b")});
  EXPECT_EQ(RecordLine(head) + "\n" + RecordLine(Head("a")) + "\n" + RecordLine(Head("b")) + "\n",
            m_record);
  ASSERT_EQ(2U, m_monitor.State().Plugins().size());
  EXPECT_EQ("b", m_monitor.State().Plugins()[1].head.id);
}

TEST(MonitorWithAStartHook, CallsItBeforeTheStartIsRecorded) {
  std::vector<std::string> order;
  const RunMonitor monitor([&order](const std::string&) { order.emplace_back("line"); },
                           [&order](const std::string& plugin) { order.push_back(plugin); });
  LogAsFrame(3, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.");
  LogAsFrame(3, "[Plugin]start frame plugin Being path= [bin/a.dll]");
  EXPECT_EQ((std::vector<std::string>{"a", "line"}), order);
}

TEST_F(Monitor, MakesEventsOfTheFramesLinesAsTheyAreLogged) {
  LogAsFrame(3, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.");
  LogAsFrame(3, "[Plugin]start frame plugin Being path= [bin/a.dll]");
  EXPECT_EQ((Texts{R"({"event":"load-begin","plugin":"a","task":0})"}), Lines());
  LogAsFrame(3, "[Plugin]start frame plugin end success.path= [bin/a.dll]");
  LogAsFrame(3, "[Plugin Load]Plugin Init begin.[a]");
  IKPXFormatLog(3, "licence", "expired");
  IKPXFormatLog(3, "host", "0 of 1 done; waiting for a (1.0 s)");
  LogAsFrame(5, "[Plugin Load]Plugin Init end (failed). [a] cost time [7]ms.");
  LogAsFrame(5, "[Plugin Load]Plugin [a] SinglePluginLoad End. count[1].");
  EXPECT_EQ((Texts{R"({"event":"load-begin","plugin":"a","task":0})",
                   R"({"event":"load-end","plugin":"a","result":"ok"})",
                   R"({"event":"init-begin","plugin":"a"})",
                   R"({"event":"init-end","plugin":"a","result":"failed","ms":7,)"
                   R"("reason":"its Init returned false: [licence] expired"})",
                   R"({"event":"counted","phase":"start","plugin":"a","result":"failed",)"
                   R"("count":1})"}),
            Lines());
  EXPECT_EQ(std::vector<std::uint64_t>(5, ThreadNumber()), OfEvents<std::uint64_t>("thread"));
  const auto times = OfEvents<std::int64_t>("ns");
  EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
  EXPECT_EQ(PluginRun::State::kInitFailed, m_monitor.State().Find("a")->started);
}

TEST_F(Monitor, TakesTheLoadersWordsWhereNoBetterReasonIsFound) {
  const std::string library = ProcessPath();  // nothing is wrong with it
  LogAsFrame(3, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.");
  LogAsFrame(3, "[Plugin]start frame plugin Being path= [" + library + "]");
  IKPXFormatLog(5, "platform.os", "%s", (library + ": out of paper").c_str());
  LogAsFrame(5, "[Plugin]Get dynamic library handle failed.path= " + library + ",errorcode=126");
  const Json end = Json::parse(Lines().back());
  EXPECT_EQ("load-end", end["event"]);
  EXPECT_EQ("out of paper", end["reason"]);
}

TEST_F(Monitor, MakesEventsOfThePoolsTasks) {
  std::uint64_t thread = 0;
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([&thread] {
    thread = ThreadNumber();
    LogAsFrame(3, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.");
    LogAsFrame(3, "[Plugin]start frame plugin Being path= [bin/a.dll]");
  }));
  ASSERT_TRUE(EverythingIsDone());
  const std::string task = Json::parse(Lines().at(0)).at("task").dump();
  EXPECT_EQ((Texts{R"({"event":"posted","task":)" + task + "}",
                   R"({"event":"task-begin","task":)" + task + "}",
                   R"({"event":"load-begin","plugin":"a","task":)" + task + "}",
                   R"({"event":"task-end","task":)" + task + "}"}),
            Lines());
  EXPECT_EQ((std::vector<std::uint64_t>{ThreadNumber(), thread, thread, thread}),
            OfEvents<std::uint64_t>("thread"));
  const auto times = OfEvents<std::int64_t>("ns");
  EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
}

TEST_F(Monitor, AddsTheHostsEventsWithTimeAndThread) {
  RunEvent request;
  request.kind = RunEvent::Kind::kStopRequest;
  request.text = "SIGTERM";
  m_monitor.Add(request);
  EXPECT_EQ(Texts{R"({"event":"stop-request","text":"SIGTERM"})"}, Lines());
  EXPECT_EQ(std::vector<std::uint64_t>{ThreadNumber()}, OfEvents<std::uint64_t>("thread"));
  EXPECT_LT(0, OfEvents<std::int64_t>("ns")[0]);
  ASSERT_EQ(1U, m_monitor.State().StopRequests().size());
}

TEST_F(Monitor, KeepsAsNotesWhatIsNoPluginsStartOrStop) {
  const std::vector<std::pair<int, std::string>> noted = {
      {6, "[PluginManager Init]----no plugins----"},
      {5, "the step ended with an exception [no disk]"},
      {5, "the step ended with an unknown exception"},
      {5, "ReadFile  failed path[bin/META_INFO/a/a.xml]"},
      {5, "ReadFile plugin[b] desc path file [bin/META_INFO/b/b.xml] failed."},
      {5, "wrror type [bin/META_INFO/c/c.xml]"},
      {5,
       "[PluginManager start]----PluginManager start failed.Get thread for platform.PluginFrame "
       "failed.----"},
      {5, "[PluginManager Uninit]Get threads for uninit plugins end, failed."},
      {5, "[Frame_Init]----KPX_Init failed! Quit HUB.exe----"}};
  for (const auto& [level, line] : noted) {
    LogAsFrame(level, line);
    LogAsFrame(3, "[Frame_Init]----KPX_Init end, cost time [0]ms.----");
    LogAsFrame(5, "ReadFile failed. xml path [bin/TevAddons/a/a.xml]");
  }
  LogAsFrame(5, "[PluginManager Uninit]Uninit lpc frame end, failed.", "platform.LPCIntegrate");
  using Kind = FrameEvent::Kind;
  std::vector<Kind> kinds;
  std::string words;
  for (const FrameEvent& note : m_monitor.Notes()) {
    kinds.push_back(note.kind);
    words += note.plugin + note.path + note.reason + ";";
  }
  EXPECT_EQ((std::vector<Kind>{Kind::kInitRefused, Kind::kStepThrew, Kind::kStepThrewNoException,
                               Kind::kRequiredFileUnreadable, Kind::kPluginDropped,
                               Kind::kTypeUnknown, Kind::kNoPoolForStart, Kind::kNoPoolForStop,
                               Kind::kPlatformInitFailed, Kind::kLpcStopFailed}),
            kinds);
  EXPECT_EQ(
      "no plugins;no disk;;bin/META_INFO/a/a.xml;bbin/META_INFO/b/b.xml;bin/META_INFO/c/c.xml;;;;;",
      words);
}

TEST_F(Monitor, NamesTheMangledInitOfTheLibraryThatWasLoaded) {
  const std::string library = TEV_FIXTURES "/init_is_mangled.dll";
  LogAsFrame(3, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.");
  LogAsFrame(3, "[Plugin]start frame plugin Being path= [" + library + "]");
  LogAsFrame(3, "[Plugin]start frame plugin end success.path= [" + library + "]");
  LogAsFrame(3, "[Plugin Load]Plugin Init begin.[a]");
  LogAsFrame(5, "[Plugin]Get dynamic library Init symbol failed.");
  LogAsFrame(5, "[Plugin Load]Plugin Init end (failed). [a] cost time [7]ms.");
  EXPECT_EQ("its library exports no Init; it is exported as _Z4Initv: is extern \"C\" missing?",
            m_monitor.State().Find("a")->reason);
}

TEST(MonitorWithoutARecord, KeepsTheStateAllTheSame) {
  ConfigureLog({0, ""});
  RunMonitor monitor({});
  PluginHead head;
  head.id = "a";
  monitor.SetPlugins({head});
  LogAsFrame(3, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.");
  LogAsFrame(3, "[Plugin Load]Plugin Init begin.[a]");
  EXPECT_EQ(PluginRun::State::kInInit, monitor.State().Find("a")->state);
}

TEST_F(Monitor, SeesNoLinesAndNoTasksOnceItHasEnded) {
  std::optional<RunMonitor> ended;
  std::string lines;
  ended.emplace([&lines](const std::string& line) { lines += line + "\n"; });
  ended->SetPlugins({Head("a")});
  LogAsFrame(3, "[Plugin Load]Plugin Init begin.[a]");
  EXPECT_NE("", lines);
  ended.reset();
  lines.clear();
  LogAsFrame(3, "[Plugin Load]Plugin Init begin.[a]");
  ASSERT_TRUE(Grant(1, 1));
  ASSERT_TRUE(Post([] {}));
  ASSERT_TRUE(EverythingIsDone());
  EXPECT_EQ("", lines);
}

TEST_F(Monitor, WritesNothingBehindTheEndOrTheCrash) {
  for (const RunEvent::Kind last : {RunEvent::Kind::kEnd, RunEvent::Kind::kCrash}) {
    std::string lines;
    RunMonitor monitor([&lines](const std::string& line) { lines += line + "\n"; });
    RunEvent event;
    event.kind = last;
    monitor.Add(event);
    const std::string before = lines;
    event.kind = RunEvent::Kind::kFinding;
    monitor.Add(event);
    EXPECT_EQ(before, lines);
    EXPECT_EQ(1U, monitor.State().Findings().size());
  }
}

}  // namespace
