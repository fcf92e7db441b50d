// A run of the frame with doubles: from its log lines to the flight record, which is read again.

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "sdk/frame/PluginFrame.h"
#include "tests/support/FrameTest.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/FrameLog.h"
#include "workbench/record/RunEventSource.h"
#include "workbench/record/RunState.h"

using testing::Invoke;

namespace {

constexpr std::uint64_t kThread = 4711;

class RecordOfARun : public FrameEntriesTest {
 protected:
  RecordOfARun() : writer(File()) {
    ON_CALL(seam.platform, Start).WillByDefault(Invoke([](KPXStartFinishFn finished) {
      Seam::CallBack(finished, nullptr);
      return 0;
    }));
    ON_CALL(seam.threads, Post).WillByDefault(Invoke([this](const std::string&, bool) {
      TakeLines();
      Write(source.OnTaskPosted(Now(), ++posted));
      return true;
    }));
    seam.onSleep = [this] { RunTasks(); };
  }

  /// The record's file, one for each test; the schema tests read it.
  static std::filesystem::path File() {
    const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    return std::filesystem::path(TEV_RECORDS) / (test + ".jsonl");
  }

  RunEventSource::Where Now() { return {++now, kThread}; }

  void Write(const std::vector<RunEvent>& events) {
    for (const RunEvent& event : events) writer.Write(event);
  }

  /// Processes the log lines since the last call.
  void TakeLines() {
    const std::vector<LogLine> lines = log.Lines();
    for (; taken < lines.size(); ++taken) {
      const LogLine& line = lines[taken];
      const auto event = ParseFrameLog(line.level, line.module, line.whole);
      if (event) Write(source.OnFrameEvent(Now(), *event));
    }
  }

  void RunTasks() {
    std::vector<std::shared_ptr<CTMTask>> tasks;
    tasks.swap(seam.tasks);
    for (const auto& task : tasks) {
      TakeLines();
      Write(source.OnTaskBegun(Now(), ++begun));
      seam.Run({task});
      TakeLines();
      Write(source.OnTaskEnded(Now(), begun));
    }
  }

  /// A line that the plugin logs itself.
  void Say(const std::string& text) {
    TakeLines();
    Write(source.OnOtherLine(Now(), "[mid] " + text));
  }

  void AddPlugin(const std::string& id, const std::vector<std::string>& dependsOn) {
    PluginHead plugin;
    plugin.id = id;
    plugin.kind = "server";
    plugin.library = tree.ExeDirectory() + id + ".dll";
    plugin.dependsOn = dependsOn;
    plugins.push_back(plugin);
    writer.Write(plugin);
  }

  void WriteHead() {
    RunHead head;
    head.run = "1";
    head.time = "2026-11-21T18:46:59.123Z";
    head.zone = "+01:00";
    head.pid = 77;
    head.path = tree.ExeDirectory();
    writer.Write(head);
  }

  /// Writes the events that only the host knows.
  void WriteHostEvents() {
    for (const RunEvent::Kind kind : {RunEvent::Kind::kUp, RunEvent::Kind::kStopRequest,
                                      RunEvent::Kind::kFinding, RunEvent::Kind::kCrash}) {
      RunEvent event;
      event.kind = kind;
      event.nanoseconds = ++now;
      event.milliseconds = 1;
      event.text = "said";
      writer.Write(event);
    }
  }

  void WriteEnd() {
    RunEvent end;
    end.kind = RunEvent::Kind::kEnd;
    end.nanoseconds = ++now;
    end.status = "degraded";
    end.number = 3;
    end.text = "1 started";
    writer.Write(end);
  }

  RecordWriter writer;
  RunEventSource source;
  std::vector<PluginHead> plugins;
  std::int64_t now = 0;
  std::uint64_t posted = 0;
  std::uint64_t begun = 0;
  std::size_t taken = 0;
};

std::string Brief(const FlightRecord& record) {
  RunState run;
  for (const PluginHead& plugin : record.plugins) run.AddPlugin(plugin);
  for (const RunEvent& event : record.events) run.Apply(event);
  std::ostringstream text;
  for (const RunState::Phase& phase : run.Phases()) {
    text << phase.name << (phase.endNs > phase.beginNs ? " ended\n" : " open\n");
  }
  for (const PluginRun& plugin : run.Plugins()) {
    text << plugin.head.id << " " << static_cast<int>(plugin.started) << " "
         << static_cast<int>(plugin.state) << " " << plugin.startCounted << plugin.stopCounted
         << " after '" << plugin.waitedFor << "': " << plugin.reason << "; " << plugin.stopReason
         << "\n";
  }
  return text.str();
}

TEST_F(RecordOfARun, HoldsEachPluginsFateAndReason) {
  tree.Product("base: mid:base top:mid gone:top");
  seam.libraries["base"].uninit = [] { return false; };
  seam.libraries["mid"].init = [this] {
    Say("the port is taken");
    return false;
  };
  seam.libraries["mid"].uninit = []() -> bool { throw std::runtime_error("busy"); };
  seam.libraries["top"].init = []() -> bool { throw std::runtime_error("two\nlines"); };
  WriteHead();
  AddPlugin("base", {});
  AddPlugin("mid", {"base"});
  AddPlugin("top", {"mid"});
  AddPlugin("gone", {"top"});
  source.SetPlugins(plugins);
  Frame_Init();
  Frame_Start();
  TakeLines();
  WriteHostEvents();
  Frame_Stop();
  Frame_UnInit();
  TakeLines();
  WriteEnd();

  const FlightRecord record = ReadFlightRecord(File());
  using State = PluginRun::State;
  const auto states = [](State started, State state) {
    return std::to_string(static_cast<int>(started)) + " " +
           std::to_string(static_cast<int>(state)) + " 11 after ";
  };
  EXPECT_EQ(
      "platform-start ended\nstart ended\nframe-stop ended\nstop ended\nplatform-stop ended\n"
      "frame-uninit ended\n"
      "base " +
          states(State::kStarted, State::kStopRefused) +
          "'': ; its UnInit returned false\n"
          "mid " +
          states(State::kInitFailed, State::kStopRefused) +
          "'base': its Init returned false: [mid] the port is taken; its UnInit threw: busy\n"
          "top " +
          states(State::kInitFailed, State::kStopped) +
          "'mid': its Init threw: two\\x0alines; \n"
          "gone " +
          states(State::kNotLoaded, State::kNotLoaded) + "'top': " + tree.ExeDirectory() +
          "gone.dll is missing, or a library that it needs is (error 126); \n",
      Brief(record));
  EXPECT_EQ(0U, record.unreadableLines);
}

TEST_F(RecordOfARun, EndsEveryTaskThatWasPosted) {
  tree.Product("a: b:a");
  seam.libraries["a"];
  seam.libraries["b"];
  WriteHead();
  Frame_Init();
  Frame_Start();
  Frame_Stop();
  std::string tasks;
  for (const RunEvent& event : ReadFlightRecord(File()).events) {
    const std::string task = std::to_string(event.task);
    if (event.kind == RunEvent::Kind::kPosted) tasks += "posted " + task + ", ";
    if (event.kind == RunEvent::Kind::kTaskBegin) tasks += "begun " + task + ", ";
    if (event.kind == RunEvent::Kind::kLoadBegin) tasks += event.plugin + " in " + task + ", ";
    if (event.kind == RunEvent::Kind::kTaskEnd) tasks += "ended " + task + "; ";
  }
  EXPECT_EQ(
      "posted 1, begun 1, a in 1, ended 1; posted 2, begun 2, b in 2, ended 2; "
      "posted 3, begun 3, ended 3; posted 4, begun 4, ended 4; ",
      tasks);
}

}  // namespace
