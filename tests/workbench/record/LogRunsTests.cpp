// Logs of HUB and of hosts that write lines of another form.

#include "workbench/record/LogRuns.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tests/support/TemporaryFolder.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/HeadLine.h"

namespace fs = std::filesystem;

namespace {

using Json = nlohmann::ordered_json;

constexpr char kHead[] =
    "HUB 1.0, frame 1.1, platform 1.2, pid 7 on harbour, product NVX 2.6.0 in /site/bin/: HUB run";

/// A text of the frame as it logs it.
std::string Framed(const std::string& text) {
  return "[PluginFrame::F]" + text + "[..\\..\\src\\PluginFrame\\F.cpp(1)]";
}

/// A line of HUB at `milliseconds` after 10:00:00, with the frame's or another module.
std::string Hub(int milliseconds, int thread, const std::string& text, int level = 3,
                const std::string& module = "platform.PluginFrame") {
  char stamp[64];
  std::snprintf(stamp, sizeof(stamp), "2026-11-23 10:00:%02d.%03d+01:00", milliseconds / 1000 % 60,
                milliseconds % 1000);
  return std::string(stamp) + " [" + std::to_string(level) + "] [" + std::to_string(thread) +
         "] [" + module + "] " + (module == "platform.PluginFrame" ? Framed(text) : text) + "\n";
}

/// A line of another host: a time and a text.
std::string Other(const std::string& time, const std::string& text) {
  return time + " INFO  " + Framed(text) + "\n";
}

/// The members of an event that are not its time, in their order.
std::string Members(const Json& event) {
  std::string text;
  for (const auto& [name, value] : event.items()) {
    if (name == "record" || name == "event" || name == "ns" || name == "task") continue;
    if (name == "thread" && value == 0) continue;
    const bool isEmpty = value.is_string() && value.get_ref<const std::string&>().empty();
    if (isEmpty && name != "result") continue;
    text += " " +
            (name == "thread"                  ? "@"
             : name == "ms" || name == "count" ? name + "="
                                               : "") +
            (isEmpty             ? "?"
             : value.is_string() ? value.get<std::string>()
                                 : value.dump());
  }
  return text;
}

/// The events, each in a line with its time in milliseconds.
std::string Events(const RecordedRun& run) {
  std::string text;
  for (const RunEvent& event : run.record.events) {
    const Json json = Json::parse(RecordLine(event));
    text += std::to_string((event.nanoseconds - run.record.head.nanoseconds) / 1'000'000) + " " +
            json["event"].get<std::string>() + Members(json) + "\n";
  }
  return text;
}

std::string Plugins(const RecordedRun& run) {
  std::string text;
  for (const PluginHead& plugin : run.record.plugins) text += plugin.id + " ";
  return text;
}

std::string Knows(const RecordedRun& run) {
  return std::string(run.knowsTasks ? "tasks " : "") + (run.knowsThreads ? "threads " : "") +
         (run.knowsEdges ? "edges " : "") + std::to_string(run.resolution);
}

std::string Notes(const RecordedRun& run) {
  std::string text;
  for (const std::string& note : run.notes) text += note + "\n";
  return text;
}

PluginHead Plugin(const std::string& id, const std::vector<std::string>& dependsOn) {
  PluginHead head;
  head.id = id;
  head.kind = "server";
  head.dependsOn = dependsOn;
  return head;
}

class LogRuns : public testing::Test {
 protected:
  std::vector<RecordedRun> Read(const std::string& content, const LogOptions& options = {}) const {
    return ReadLogRuns({folder.Write("run.log", content)}, options);
  }

  /// The only run of a log.
  RecordedRun One(const std::string& content, const LogOptions& options = {}) const {
    std::vector<RecordedRun> runs = Read(content, options);
    EXPECT_EQ(std::size_t{1}, runs.size());
    return runs.front();
  }

  /// What reading files throws, the folder as "F".
  std::string Problem(const std::vector<std::string>& names, const LogOptions& options = {}) const {
    try {
      std::vector<fs::path> files;
      for (const std::string& name : names) files.emplace_back(folder.Path() / name);
      ReadRuns(files, options);
    } catch (const std::runtime_error& error) {
      std::string text = error.what();
      const std::string path = folder.Path().u8string();
      for (auto at = text.find(path); at != std::string::npos; at = text.find(path)) {
        text.replace(at, path.size() + 1, "F/");
      }
      return text;
    }
    return "nothing was thrown";
  }

  TemporaryFolder folder;
};

std::string StartOfA() {
  return Hub(0, 1, kHead, 3, "host") +
         Hub(5, 2, "[Frame_Init]----KPX_Init end, cost time [3]ms.----") +
         Hub(9, 2, "[1.Init]----!Frame_Init end.success! cost time [7]ms.----") +
         Hub(10, 2, "[PluginManager start]Plugins init start...") +
         Hub(11, 4, "[Plugin Load]Plugin [a] SinglePluginLoad Begin.") +
         Hub(11, 4, "[Plugin]start frame plugin Being path= [/site/bin/a.dll]") +
         Hub(12, 4, "[Plugin]start frame plugin end success.path= [/site/bin/a.dll]") +
         Hub(12, 4, "[Plugin Load]Plugin Init begin.[a]") +
         Hub(32, 4, "[Plugin Load]Plugin Init end. [a] cost time [20]ms") +
         Hub(33, 4, "[Plugin Load]Plugin [a] SinglePluginLoad End. count[1].");
}

constexpr char kStartOfA[] =
    "2 phase-begin @2 frame-init\n"
    "9 phase-end @2 frame-init ms=7\n"
    "10 phase-begin @2 start\n"
    "11 load-begin @4 a\n"
    "12 load-end @4 a ok\n"
    "12 init-begin @4 a\n"
    "32 init-end @4 a ok ms=20\n"
    "33 counted @4 start a ok count=1\n";

TEST_F(LogRuns, OfHubHaveThreadsAndMilliseconds) {
  const RecordedRun run = One(StartOfA());
  EXPECT_EQ(kStartOfA, Events(run));
  EXPECT_EQ("a ", Plugins(run));
  EXPECT_EQ("threads 1000000", Knows(run));
  EXPECT_EQ("", Notes(run));
}

TEST_F(LogRuns, OfHubHaveTheHeadThatTheLogBeginsWith) {
  const RunHead head = One(StartOfA()).record.head;
  RunHead expected = *ReadHeadLine(kHead);
  expected.run = "2026-11-23T09:00:00.000Z-7";
  expected.time = "2026-11-23T09:00:00.000Z";
  expected.zone = "+01:00";
  expected.sleep = RunHead::kEarlySleep;
  EXPECT_EQ(RecordLine(expected), RecordLine(head));
}

TEST_F(LogRuns, GiveTheLastLineOfAPluginAsTheReasonOfItsFailure) {
  const RecordedRun run =
      One(Hub(0, 1, kHead, 3, "host") + Hub(1, 2, "[PluginManager start]Plugins init start...") +
          Hub(1, 4, "[Plugin Load]Plugin Init begin.[a]") + Hub(2, 4, "no disk", 5, "a") +
          Hub(2, 5, "not mine", 5, "b") +
          Hub(3, 4, "[Plugin Load]Plugin Init end (failed). [a] cost time [2]ms.", 5) +
          Hub(3, 4, "[Plugin Load]Plugin [a] SinglePluginLoad End. count[1].", 5) +
          Hub(4, 4, "[Plugin Load]Plugin [b] SinglePluginLoad Begin.") +
          Hub(4, 4, "[Plugin]start frame plugin Being path= [/b.dll]") +
          Hub(4, 4, "/b.dll: not found", 5, "platform.os") +
          Hub(4, 4, "[Plugin]Get dynamic library handle failed.path= /b.dll,errorcode=126", 5) +
          Hub(4, 4, "[Plugin Load]Plugin b load failed, InitFailed, count[2].", 5));
  EXPECT_EQ(
      "1 phase-begin @2 start\n"
      "1 init-begin @4 a\n"
      "3 init-end @4 a failed ms=2 its Init returned false: [a] no disk\n"
      "3 counted @4 start a failed count=1\n"
      "4 load-begin @4 b\n"
      "4 load-end @4 b failed not found\n"
      "4 counted @4 start b not-loaded count=2\n",
      Events(run));
}

TEST_F(LogRuns, OfHubAreFoundBehindWhatAnotherProgramWritesBeforeThem) {
  std::string lines;
  std::string line;
  for (const char c : StartOfA()) {
    line += c;
    if (c != '\n') continue;
    lines += "Nov 24 23:59:59 harbour hub[77]: " + line;
    line.clear();
  }
  EXPECT_EQ(kStartOfA, Events(One(lines)));
}

TEST_F(LogRuns, WithTheProductsPluginsHaveEdges) {
  LogOptions options;
  options.plugins = {Plugin("b", {"a"}), Plugin("a", {})};
  const RecordedRun run =
      One(StartOfA() + Hub(200, 5, "[Plugin Load]Plugin [b] SinglePluginLoad Begin."), options);
  EXPECT_EQ(
      "2 phase-begin @2 frame-init\n"
      "9 phase-end @2 frame-init ms=7\n"
      "10 phase-begin @2 start\n"
      "10 ready @2 start a\n"
      "11 load-begin @4 a\n"
      "12 load-end @4 a ok\n"
      "12 init-begin @4 a\n"
      "32 init-end @4 a ok ms=20\n"
      "33 counted @4 start a ok count=1\n"
      "33 ready @4 start b a\n"
      "200 load-begin @5 b\n",
      Events(run));
  EXPECT_EQ("b a ", Plugins(run));
  EXPECT_EQ("threads edges 1000000", Knows(run));
}

TEST_F(LogRuns, ShowAnEscapedNameAsTheProductHasIt) {
  const std::string log = Hub(1, 4, "[Plugin Load]Plugin Init begin.[a\\x0ab]");
  EXPECT_EQ("a\\x0ab ", Plugins(One(log)));
  LogOptions options;
  options.plugins = {Plugin("a\nb", {})};
  const RecordedRun run = One(log, options);
  EXPECT_EQ("a\nb ", Plugins(run));
  EXPECT_EQ("0 init-begin @4 a\nb\n", Events(run));
}

// ---------------------------------------------------------------- several runs, parts of runs

TEST_F(LogRuns, InOneFileAreToldApart) {
  const std::string without = StartOfA().substr(StartOfA().find('\n') + 1);
  const std::vector<RecordedRun> runs = Read(StartOfA() + StartOfA() + without);
  ASSERT_EQ(std::size_t{3}, runs.size());
  const std::string file = (folder.Path() / "run.log").u8string();
  EXPECT_EQ(file + ", run 1 of 3, 2026-11-23T09:00:00.000Z", runs[0].name);
  EXPECT_EQ(file + ", run 3 of 3, 2026-11-23T09:00:00.005Z", runs[2].name);
  EXPECT_EQ(kStartOfA, Events(runs[0]));
  EXPECT_EQ(kStartOfA, Events(runs[1]));
  EXPECT_EQ(0, runs[2].record.head.pid);
}

TEST_F(LogRuns, AreToldApartByAnyFirstLineOfTheFrame) {
  const auto runs = [&](const std::vector<std::string>& texts) {
    std::string log;
    for (const std::string& text : texts) log += Hub(0, 2, text);
    return Read(log).size();
  };
  const std::string init = "[Frame_Init]----KPX_Init end, cost time [3]ms.----";
  const std::string failed = "[Frame_Init]----KPX_Init failed! Quit HUB.exe----";
  const std::string manager = "[Frame_Init]----PluginManager Init begin----";
  const std::string start = "[2.Start]----!Frame_Start begin!----";
  const std::string plugins = "[PluginManager start]Plugins init start...";
  const std::string stop = "[3.Stop]----!Frame_Stop begin!----";
  EXPECT_EQ(1U, runs({init, manager, start, plugins, stop}));
  EXPECT_EQ(2U, runs({init, init}));
  EXPECT_EQ(2U, runs({failed, init}));
  EXPECT_EQ(2U, runs({manager, start, plugins, stop, manager}));
  EXPECT_EQ(2U, runs({start, plugins, stop, start}));
  EXPECT_EQ(2U, runs({plugins, plugins}));
  EXPECT_EQ(2U, runs({stop, start}));
}

TEST_F(LogRuns, GoOnInTheNextOfRenamedFiles) {
  const std::string log = StartOfA();
  const std::size_t first = log.find('\n', 500) + 1;
  const std::size_t second = log.find('\n', first + 500) + 1;
  folder.Write("hub.2.log", log.substr(0, first));
  folder.Write("hub.1.log", log.substr(first, second - first));
  folder.Write("hub.log", log.substr(second));
  const fs::path path = folder.Path();
  for (const auto& files : {std::vector<fs::path>{path / "hub.log"},
                            {path / "hub.1.log", path / "hub.log", path / "hub.2.log"}}) {
    const std::vector<RecordedRun> runs = ReadRuns(files, {});
    ASSERT_EQ(std::size_t{1}, runs.size());
    EXPECT_EQ((path / "hub.2.log").u8string(), runs[0].name);
    EXPECT_EQ(kStartOfA, Events(runs[0]));
  }
}

TEST_F(LogRuns, WithoutTheirBeginSaySo) {
  const RecordedRun run =
      One(Hub(3, 4, "[Plugin Load]Plugin Init end (failed). [a] cost time [2]ms.", 5) +
          Hub(3, 4, "[Plugin Load]Plugin [a] SinglePluginLoad End. count[1].", 5) +
          Hub(5, 6, "[Plugin Unload]Plugin UnInit end. [b] cost time [1] ms.") +
          Hub(5, 6, "[Plugin Unload]Plugin [b] SinglePluginUnload End. count[4].", 5));
  EXPECT_EQ(
      "0 init-end @4 a failed ms=2 not known: the log does not contain the lines before its end\n"
      "0 counted @4 start a failed count=1\n"
      "2 uninit-end @6 b refused ms=1 not known: the log does not contain the lines before its "
      "end\n"
      "2 counted @6 stop b refused count=4\n",
      Events(run));
  EXPECT_EQ("the log does not contain the begin of this run\n", Notes(run));
}

TEST_F(LogRuns, CutAnywhereAreAPartOfTheWholeOrASentence) {
  const std::string log = StartOfA();
  for (std::size_t size = 0; size < log.size(); size += 7) {
    const std::string file = folder.Write("run.log", log.substr(0, size));
    std::vector<RecordedRun> runs;
    try {
      runs = ReadLogRuns({file}, {});
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string::npos, std::string(error.what()).find(" is neither a "));
      EXPECT_LT(size, 400U);
      continue;
    }
    ASSERT_EQ(std::size_t{1}, runs.size());
    EXPECT_EQ(0U, std::string(kStartOfA).find(Events(runs[0]))) << size;
    folder.Write("run.log", log.substr(size));
    EXPECT_LE(ReadLogRuns({file}, {}).size(), 1U);
    if (size > log.size() - 200) break;
  }
}

TEST_F(LogRuns, NoteHowTheCommandLineChangedTheTimes) {
  const std::string file = folder.Write(
      "run.log", Hub(0, 1, std::string(kHead) + " --full-sleep --delay a=5", 3, "host") +
                     Hub(1, 1, "[Plugin Load]Plugin Init begin.[a]"));
  const RecordedRun run = ReadLogRuns({file}, {}).at(0);
  EXPECT_EQ("full", run.record.head.sleep);
  EXPECT_EQ((std::vector<std::string>{
                "starts were delayed on purpose (--delay, --shuffle), which counts as work",
                "the frame slept its whole time between two looks (--full-sleep)"}),
            run.notes);
}

TEST_F(LogRuns, OfTwoProcessesAtTheSameTimeSaySo) {
  const std::string mixed =
      "the plugins' counts are not in order: lines are missing, or another process wrote to the "
      "same log at the same time; times and results may belong to either\n";
  const auto count = [](int number, const std::string& plugin) {
    return Hub(1, 4,
               "[Plugin Load]Plugin [" + plugin + "] SinglePluginLoad End. count[" +
                   std::to_string(number) + "].");
  };
  EXPECT_EQ(mixed, Notes(One(StartOfA() + count(1, "b"))));
  EXPECT_EQ("", Notes(One(StartOfA() + count(2, "b"))));
  EXPECT_EQ(
      "the plugins' counts have a gap: lines are missing; what they say of plugins is not known\n",
      Notes(One(StartOfA() + count(3, "b"))));
}

TEST_F(LogRuns, IgnoreLinesOfOthersBetween) {
  const std::string quoted = "2026-11-23 10:00:01.000+01:00 [3] [4] [a] it logs " +
                             Framed("[Plugin Load]Plugin [a] SinglePluginLoad End. count[9].") +
                             "\n";
  const std::string foreign =
      Other("09:00:00", "[Plugin Load]Plugin [x] SinglePluginLoad End. count[9].");
  std::string lines;
  std::string line;
  for (const char c : StartOfA()) {
    line += c;
    if (c != '\n') continue;
    lines += "\n\r\n" + quoted + line + foreign + std::string("\0\xff][[Plugin Load]\n", 18);
    line.clear();
  }
  EXPECT_EQ(kStartOfA, Events(One(lines)));
}

// ---------------------------------------------------------------- other hosts

TEST_F(LogRuns, OfAnotherHostHaveNoThreads) {
  const RecordedRun run =
      One(Other("10:00:00.5", "[PluginManager start]Plugins init start...") +
          Other("10:00:00.6", "[Plugin Load]Plugin [a] SinglePluginLoad Begin.") +
          Other("10:00:00.6", "[Plugin Load]Plugin [b] SinglePluginLoad Begin.") +
          Other("10:00:00.6", "[Plugin]start frame plugin Being path= [C:\\bin\\b.dll]") +
          Other("10:00:00.6", "[Plugin]start frame plugin Being path= [C:\\bin\\a.dll]") +
          Other("10:00:00.7", "[Plugin]start frame plugin end success.path= [C:\\bin\\a.dll]") +
          Other("10:00:00.7",
                "[Plugin]Get dynamic library handle failed.path= C:\\bin\\b.dll,errorcode=126") +
          Other("10:00:00.7", "[Plugin]FreeLibrary Begin") +
          Other("10:00:00.8", "[Plugin Load]Plugin Init begin.[a]") +
          Other("10:00:00.8", "[Plugin Load]Plugin b load failed, InitFailed, count[1].") +
          Other("10:00:00.9", "[Plugin]Init threw [no disk]") +
          Other("10:00:01.0", "[Plugin Load]Plugin Init end (failed). [a] cost time [200]ms.") +
          Other("10:00:01.0", "[Plugin Load]Plugin [a] SinglePluginLoad End. count[2]."));
  EXPECT_EQ(
      "0 phase-begin start\n"
      "100 load-begin a\n"
      "100 load-begin b\n"
      "200 load-end a ok\n"
      "200 load-end b failed C:\\bin\\b.dll is missing, or a library that it needs is (error 126)\n"
      "300 init-begin a\n"
      "300 counted start b not-loaded count=1\n"
      "500 init-end a failed ms=200 its Init threw: no disk\n"
      "500 counted start a failed count=2\n",
      Events(run));
  EXPECT_EQ("a b ", Plugins(run));
  EXPECT_EQ("100000000", Knows(run));
  EXPECT_EQ("the log does not contain the begin of this run\n", Notes(run));
  EXPECT_EQ("10:00:00.500", run.record.head.time);
  EXPECT_EQ("", run.record.head.zone);
}

TEST_F(LogRuns, WithoutThreadsDoNotGuessWhoseInitThrew) {
  const RecordedRun run =
      One(Other("10:00:00", "[PluginManager start]Plugins init start...") +
          Other("10:00:00", "[Plugin Load]Plugin Init begin.[a]") +
          Other("10:00:00", "[Plugin Load]Plugin Init begin.[b]") +
          Other("10:00:01", "[Plugin]Init threw [no disk]") +
          Other("10:00:02", "[Plugin Load]Plugin Init end. [a] cost time [2000]ms") +
          Other("10:00:02", "[Plugin Load]Plugin Init end (failed). [b] cost time [2000]ms.") +
          Other("10:00:03", "[Plugin Load]Plugin [b] SinglePluginLoad End. count[1].") +
          Other("10:00:03", "[Plugin Load]Plugin [a] SinglePluginLoad End. count[2].") +
          Other("10:00:03", "[Plugin Load]Plugin [c] SinglePluginLoad End. count[3]."));
  EXPECT_EQ(
      "0 phase-begin start\n"
      "0 init-begin a\n"
      "0 init-begin b\n"
      "2000 init-end a ok ms=2000\n"
      "2000 init-end b failed ms=2000 not known: the log does not say which plugin a line on the "
      "reason belongs to\n"
      "3000 counted start b failed count=1\n"
      "3000 counted start a ok count=2\n"
      "3000 counted start c ? count=3\n",
      Events(run));
  EXPECT_EQ("1000000000", Knows(run));
}

/// The lines of a stop without threads: "+a" a's UnInit has ended, "f" a library is released, "!a"
/// the only UnInit that runs threw, "-a" a is counted.
std::string Stop(const std::string& steps) {
  std::string log = Other("10:00:00", "[PluginManager Uninit]Uninit all plugins start.");
  int count = 0;
  for (std::size_t i = 0; i < steps.size(); i += 3) {
    const std::string name(1, steps[i + 1]);
    const char step = steps[i];
    if (step == '>') log += Other("10:00:01", "[Plugin Unload]Plugin UnInit begin.[" + name + "]");
    if (step == '!') log += Other("10:00:01", "[Plugin]UnInit threw [busy]");
    if (step == '+') {
      log +=
          Other("10:00:01", "[Plugin Unload]Plugin UnInit end. [" + name + "] cost time [1] ms.");
    }
    if (step == 'f') log += Other("10:00:01", "[Plugin]FreeLibrary Begin");
    if (step == '-') {
      log +=
          Other("10:00:02", "[Plugin Unload]Plugin [" + name + "] SinglePluginUnload End. count[" +
                                std::to_string(++count) + "].");
    }
  }
  return log;
}

/// Name and result of each plugin that was counted.
std::string Results(const RecordedRun& run) {
  std::string text;
  for (const RunEvent& event : run.record.events) {
    if (event.kind != RunEvent::Kind::kCounted) continue;
    const std::string result = Json::parse(RecordLine(event))["result"];
    text += event.plugin + "=" + (result.empty() ? "?" : result) + " ";
  }
  return text;
}

TEST_F(LogRuns, WithoutThreadsDecideTheStopByTheReleasesWhereTheyCan) {
  EXPECT_EQ("a=ok ", Results(One(Stop(">a +a f. -a"))));
  EXPECT_EQ("a=refused ", Results(One(Stop(">a +a -a"))));
  EXPECT_EQ("a=refused b=ok ", Results(One(Stop(">a +a -a >b +b f. -b"))));
  EXPECT_EQ("b=ok a=ok ", Results(One(Stop(">a >b +a f. +b f. -b -a"))));
  EXPECT_EQ("a=ok b=refused ", Results(One(Stop(">a >b +a f. +b -a -b"))));
}

TEST_F(LogRuns, WithoutThreadsDoNotGuessWhoseLibraryWasReleased) {
  EXPECT_EQ("a=? b=? ", Results(One(Stop(">a >b +a +b f. -a -b"))));
  EXPECT_EQ("a=? b=? c=? ", Results(One(Stop(">a >b +a +b f. -a +c f. -b -c"))));
  EXPECT_EQ("a=? ", Results(One(Stop("-a"))));
}

TEST_F(LogRuns, WithoutThreadsKnowWhoseUnInitThrewWhenOnlyOneRuns) {
  const RecordedRun run = One(Stop(">a !. +a -a"));
  EXPECT_EQ(
      "0 phase-begin stop\n"
      "1000 uninit-begin a\n"
      "1000 uninit-end a refused ms=1 its UnInit threw: busy\n"
      "2000 counted stop a refused count=1\n",
      Events(run));
}

TEST_F(LogRuns, PassMidnightWithoutADate) {
  const RecordedRun run = One(Other("23:59:59.5", "[PluginManager start]Plugins init start...") +
                              Other("00:00:00.5", "[Plugin Load]Plugin Init begin.[a]") +
                              Other("00:00:00.4", "[Plugin Load]Plugin Init begin.[b]") +
                              Other("23:59:59.5", "[Plugin Load]Plugin Init begin.[c]") +
                              Other("00:00:00.5", "[Plugin Load]Plugin Init begin.[d]"));
  EXPECT_EQ(
      "0 phase-begin start\n"
      "1000 init-begin a\n"
      "1000 init-begin b\n"
      "86400000 init-begin c\n"
      "86401000 init-begin d\n",
      Events(run));
}

TEST_F(LogRuns, PassTheNewYearWithoutAYear) {
  const RecordedRun run =
      One(Other("Dec 31 23:59:59", "[PluginManager start]Plugins init start...") +
          Other("Jan  1 00:00:01", "[Plugin Load]Plugin Init begin.[a]"));
  EXPECT_EQ("0 phase-begin start\n2000 init-begin a\n", Events(run));
}

TEST_F(LogRuns, OfAClockThatWasSetBackGoOn) {
  const RecordedRun run =
      One(Other("2026-11-23 10:00:00", "[PluginManager start]Plugins init start...") +
          Other("2026-11-23 10:00:09", "[Plugin Load]Plugin Init begin.[a]") +
          Other("2026-11-23 09:00:09", "[Plugin Load]Plugin Init begin.[b]") +
          Other("2026-11-23 09:00:11", "[Plugin Load]Plugin Init begin.[c]"));
  EXPECT_EQ("0 phase-begin start\n9000 init-begin a\n9000 init-begin b\n11000 init-begin c\n",
            Events(run));
  EXPECT_EQ(
      "the log does not contain the begin of this run\n"
      "the stamps go back by 3600000 ms; the time that passed there is not known and counts as 0\n",
      Notes(run));
}

TEST_F(LogRuns, ReadStampsByTheirFormat) {
  LogOptions options;
  options.timeFormat = "%d/%m/%Y %H:%M:%S %z";
  const RecordedRun run =
      One(Other("[x] 11/12/2026 10:00:00.250 +0100", "[PluginManager start]Plugins init start...") +
              Other("nothing", "[Plugin Load]Plugin Init begin.[a]"),
          options);
  EXPECT_EQ("2026-12-11T09:00:00.250Z", run.record.head.time);
  EXPECT_EQ("+01:00", run.record.head.zone);
  EXPECT_EQ(
      "the log does not contain the begin of this run\n"
      "lines of the frame without a time stamp were left out: 1\n",
      Notes(run));
}

// ---------------------------------------------------------------- records and logs

TEST_F(LogRuns, AndRecordsAreReadTogetherInTheirOrder) {
  RunHead head;
  head.run = "r";
  folder.Write("run.jsonl", RecordLine(head) + "\n");
  folder.Write("b.log", StartOfA());
  folder.Write("a.log", StartOfA());
  const fs::path path = folder.Path();
  EXPECT_TRUE(IsFlightRecord(path / "run.jsonl"));
  EXPECT_FALSE(IsFlightRecord(path / "a.log"));
  EXPECT_FALSE(IsFlightRecord(path / "none"));
  std::string names;
  for (const RecordedRun& run :
       ReadRuns({path / "b.log", path / "run.jsonl", path / "a.log"}, {})) {
    names += fs::path(run.name).filename().u8string() +
             (run.source == RecordedRun::Source::kLog ? " log, " : " record, ");
  }
  EXPECT_EQ("b.log log, run.jsonl record, a.log log, ", names);
}

TEST_F(LogRuns, ThatCannotBeReadSayWhy) {
  folder.Write("empty", "");
  folder.Write("other.txt", "a\nb\n");
  folder.Write("wide.log", "\xff\xfe[");
  folder.Write("new.jsonl", "{\"record\":\"head\",\"schema\":7}\n");
  folder.Write("cut.jsonl", "{\"reco");
  folder.Write("head.log", Hub(0, 1, kHead, 3, "host") +
                               Other("10:00:01", "[Plugin Load]Plugin Init begin.[a]"));
  folder.Write("a.log", "line\n" + Other("at noon", "[Plugin Load]Plugin Init begin.[a]"));
  fs::create_directory(folder.Path() / "folder");
  EXPECT_EQ("F/empty is empty", Problem({"empty"}));
  EXPECT_EQ("F/other.txt is neither a flight record nor a log with a line of the frame",
            Problem({"other.txt"}));
  EXPECT_EQ("F/wide.log is encoded in UTF-16; a log is read as UTF-8, so convert it first",
            Problem({"wide.log"}));
  EXPECT_EQ("F/folder is a folder; name its flight records or logs", Problem({"folder"}));
  EXPECT_EQ("F/new.jsonl is a flight record of schema 7; this version reads schema 1",
            Problem({"new.jsonl"}));
  EXPECT_EQ("F/cut.jsonl is no flight record: its first line is not a head",
            Problem({"cut.jsonl"}));
  EXPECT_EQ(
      "F/head.log: behind HUB's first line of a run there is no line of the frame as HUB writes "
      "it; "
      "what there is another program wrote",
      Problem({"head.log"}));
  EXPECT_EQ(
      "F/a.log:2: no time stamp is found in this line of the frame; --time-format says how it is "
      "written, such as --time-format '%d/%m/%Y %H:%M:%S'",
      Problem({"a.log"}));
  LogOptions options;
  options.timeFormat = "%F %T";
  EXPECT_EQ("F/a.log:2: the line's time stamp is not written as --time-format says, %F %T",
            Problem({"a.log"}, options));
  EXPECT_EQ(0U, Problem({"none.log"}).find("F/none.log cannot be opened: "));
}

}  // namespace
