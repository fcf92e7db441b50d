// What is reported when plugin code ends the process, in processes that the tests fork.

#include "host/CrashReport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/RunClock.h"
#include "reference/os/SystemFile.h"
#include "sdk/os/os.h"
#include "tests/support/Latch.h"
#include "tests/support/TemporaryFolder.h"
#include "workbench/record/FlightRecord.h"

namespace {

using Kind = FrameEvent::Kind;

FrameEvent Event(Kind kind, const std::string& plugin = {}, const std::string& path = {}) {
  FrameEvent event;
  event.kind = kind;
  event.plugin = plugin;
  event.path = path;
  return event;
}

/// Tracks these events as if the calling thread had just logged them.
void Track(const std::vector<FrameEvent>& events) {
  for (const FrameEvent& event : events) TrackPluginCode(event);
}

void WriteAll(SystemFile file, const std::string& text) {
  EXPECT_TRUE(WriteWhole(file, text, kForEver));
}

/// What a process has left. Numbers that differ in each run are replaced: its own path, its
/// thread's number if that is the crashed one, the times; less than a second is 0.0 s.
struct End {
  int status = -1;
  std::string errors;  // as far as the begin of the stack
  std::string record;
  std::string output;
};

/// What the crashed process has beside its standard output.
enum Files { kNone = 0, kErrors = 1, kRecord = 2 };

/// Forks a process that installs the crash report and runs `code`, and waits for its end.
/// `output`: a file that stands for HUB's standard output. Without kErrors standard error cannot be
/// written, so that no time is spent on the stack.
End EndOf(int files, const std::function<void(SystemFile output)>& code) {
  const TemporaryFolder folder;
  for (const char* name : {"errors", "record", "output"}) folder.Write(name, "");
  const std::int64_t begin = SteadyNanoseconds();
  const pid_t child = fork();
  if (child == 0) {
    const int access = (files & kErrors) != 0 ? O_WRONLY : O_RDONLY;
    dup2(open((folder / "errors").c_str(), access | O_CLOEXEC), STDERR_FILENO);
    InstallCrashReport();
    if ((files & kRecord) != 0) SetCrashRecord(folder.Path() / "record", folder.Path() / "shown");
    code(OpenForAppending(folder.Path() / "output"));
    _exit(99);
  }
  int status = 0;
  EXPECT_EQ(child, waitpid(child, &status, 0));
  const auto made = [&](const std::string& name) {
    std::string text = folder.Read(name);
    std::smatch ns;
    if (std::regex_search(text, ns, std::regex(R"("ns":(\d+))"))) {
      EXPECT_LE(begin, std::stoll(ns[1]));
      EXPECT_GE(SteadyNanoseconds(), std::stoll(ns[1]));
    }
    const std::regex shown(folder / "shown");
    const std::regex thread("\"thread\":" + std::to_string(child) + "\\b");
    text = std::regex_replace(text, shown, "FILE");
    text = std::regex_replace(text, thread, "\"thread\":MAIN");
    text = std::regex_replace(text, std::regex("for 0\\.\\d s"), "for 0.0 s");
    return std::regex_replace(text, std::regex(R"("ns":\d+)"), "\"ns\":N");
  };
  End end;
  end.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  end.errors = made("errors");
  end.errors = end.errors.substr(0, end.errors.find("#0 ") + 3);
  end.record = made("record");
  end.output = made("output");
  return end;
}

/// The record's line of a process that tracks these events and then calls exit.
std::string LineAfter(const std::vector<FrameEvent>& events) {
  return EndOf(kRecord,
               [&](SystemFile) {
                 Track(events);
                 std::exit(5);
               })
      .record;
}

std::string Line(const std::string& members) {
  return R"({"record":"event","event":"crash","ns":N,"thread":MAIN)" + members + "}\n";
}

TEST(CrashReport, NamesThePluginAndItsRecord) {
  const End end = EndOf(kErrors | kRecord, [](SystemFile) {
    Track({Event(Kind::kInitBegin, "a.server")});
    std::exit(5);
  });
  EXPECT_EQ(4, end.status);
  EXPECT_EQ(
      "\nHUB: the process ends: exit(5) in a.server, in Init for 0.0 s\n"
      "HUB: the record of this run: FILE\n"
      "#0 ",
      end.errors);
  EXPECT_EQ(Line(R"(,"phase":"start","plugin":"a.server",)"
                 R"("text":"exit(5) in a.server, in Init for 0.0 s")"),
            end.record);
  EXPECT_EQ("", end.output);
}

TEST(CrashReport, OfNoPluginSaysSo) {
  const End end = EndOf(kErrors, [](SystemFile) { std::exit(5); });
  EXPECT_EQ(
      "\nHUB: the process ends: exit(5) on a thread that runs no plugin's Init or UnInit\n#0 ",
      end.errors);
  EXPECT_EQ("", end.record);
}

TEST(CrashReport, OfEachStepHasItAndItsPhase) {
  const std::vector<std::pair<Kind, std::string>> steps = {
      {Kind::kLoadTaskBegin, R"("start","plugin":"a","text":"exit(5) in a, loading for )"},
      {Kind::kInitBegin, R"("start","plugin":"a","text":"exit(5) in a, in Init for )"},
      {Kind::kUnloadTaskBegin, R"("stop","plugin":"a","text":"exit(5) in a, stopping for )"},
      {Kind::kUnInitBegin, R"("stop","plugin":"a","text":"exit(5) in a, in UnInit for )"}};
  for (const auto& [step, text] : steps) {
    EXPECT_EQ(Line(R"(,"phase":)" + text + "0.0 s\""), LineAfter({Event(step, "a")}));
  }
  EXPECT_EQ(Line(R"(,"phase":"stop","plugin":"a",)"
                 R"("text":"exit(5) in a, being unmapped for 0.0 s")"),
            LineAfter({Event(Kind::kUnInitBegin, "a"), Event(Kind::kFreeBegin)}));
}

TEST(CrashReport, AfterThePluginWasCountedIsNotOfIt) {
  for (const Kind counted : {Kind::kStartCounted, Kind::kStartAbandoned, Kind::kNotLoadedCounted,
                             Kind::kLoadSkipped, Kind::kStopCounted, Kind::kStopRefusedCounted,
                             Kind::kNothingToStopCounted, Kind::kNamelessNotCounted}) {
    EXPECT_EQ(Line(R"(,"text":"exit(5) on a thread that runs no plugin's Init or UnInit")"),
              LineAfter({Event(Kind::kInitBegin, "a"), Event(counted, "a")}))
        << static_cast<int>(counted);
  }
}

TEST(CrashReport, HasNamesAsValidJson) {
  const std::vector<std::pair<std::string, std::string>> names = {
      {"a b\"c\\d\x7f~", R"(a b\"c\\d)"
                         "\x7f~"},
      {"\x1f!", "\uFFFD!"},
      {"\xC2\x80\xDF\xBF.", "\u0080\u07FF."},
      {"\xE0\xA0\x80\xEF\xBF\xBF.", "\u0800\uFFFF."},
      {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF.", "\U00010000\U0010FFFF."},
      {"\x80\xBF\xC1\xBF.", "\uFFFD\uFFFD\uFFFD\uFFFD."},
      {"\xF5\x80.", "\uFFFD\uFFFD."},
      {"\xC3(", "\uFFFD("},
      {"\xE2\x82", "\uFFFD\uFFFD"},
      {"\xE2\x82x", "\uFFFD\uFFFDx"},
      {"\xC3", "\uFFFD"}};
  for (const auto& [name, shown] : names) {
    const std::string line = LineAfter({Event(Kind::kInitBegin, name)});
    const std::string begin = Line("").substr(0, Line("").size() - 2) +
                              R"(,"phase":"start","plugin":")" + shown + R"(","text":"exit(5) in )";
    EXPECT_EQ(begin, line.substr(0, begin.size()));
  }
}

TEST(CrashReport, OfTheRunsThreadWritesTheObject) {
  const std::string members =
      R"(,"totals":null,"Frame_Init":null,"Frame_Start":null,"CallbackResult":null,)"
      R"("LoadState":null,"Handles":null,"Timing":null,"Notified":null,"phases":null,)"
      R"("plugins":null,"findings":null,"record":)";
  const auto code = [](SystemFile output) {
    SetCrashOutput(output, CrashOutput::kObject);
    Track({Event(Kind::kInitBegin, "a\"")});
    std::exit(5);
  };
  const std::string begin =
      R"({"schema":2,"product":null,"status":"crashed",)"
      R"("sentence":"crashed: exit(5) in a\", in Init for 0.0 s","exitStatus":4)";
  EXPECT_EQ(begin + members + "\"FILE\"}\n", EndOf(kRecord, code).output);
  EXPECT_EQ(begin + members + "null}\n", EndOf(kNone, code).output);
}

TEST(CrashReport, BySignalHasNoExitStatusInTheObject) {
  const End end = EndOf(kRecord, [](SystemFile output) {
    SetCrashOutput(output, CrashOutput::kObject);
    std::abort();
  });
  EXPECT_EQ(
      R"({"schema":2,"product":null,"status":"crashed","sentence":"crashed: SIGABRT: abort() was )"
      R"(called on a thread that runs no plugin's Init or UnInit","exitStatus":null,)",
      end.output.substr(0, end.output.find("\"totals\"")));
}

TEST(CrashReport, OfTheRunsThreadWritesTheEventOrNothing) {
  const auto code = [](CrashOutput kind) {
    return [kind](SystemFile output) {
      SetCrashOutput(output, kind);
      std::exit(5);
    };
  };
  const End event = EndOf(kRecord, code(CrashOutput::kEvent));
  EXPECT_EQ(Line(R"(,"text":"exit(5) on a thread that runs no plugin's Init or UnInit")"),
            event.record);
  EXPECT_EQ(event.record, event.output);
  EXPECT_EQ("", EndOf(kRecord, code(CrashOutput::kNothing)).output);
}

TEST(CrashReport, AddsNothingToAnOutputWhoseEndTheRunHasBegun) {
  const End end = EndOf(kRecord, [](SystemFile output) {
    SetCrashOutput(output, CrashOutput::kObject);
    if (!ClaimLastOutput() || ClaimLastOutput()) _exit(98);
    std::exit(5);
  });
  EXPECT_EQ(4, end.status);
  EXPECT_EQ("", end.output);
}

TEST(CrashReport, IsGivenToTheRunsThreadWhichWritesTheEnd) {
  const End end = EndOf(kRecord, [](SystemFile output) {
    Latch isRunning;
    std::thread run([&] {
      SetCrashOutput(output, CrashOutput::kObject);
      if (ReportedCrash() || !RecordPermit()) _exit(98);
      isRunning.Arrive();
      std::optional<RunEvent> crash;
      while (!crash) crash = ReportedCrash();
      if (!ClaimLastOutput() || RecordPermit()) _exit(98);
      WriteAll(output, RecordLine(*crash) + "\n" + std::to_string(crash->number) + "\n");
      LastOutputIsWritten();
      AnnounceExit();  // does not return
      _exit(98);
    });
    isRunning.Wait();
    Track({Event(Kind::kInitBegin, "a")});
    std::exit(5);
  });
  EXPECT_EQ(4, end.status);
  EXPECT_EQ(Line(R"(,"phase":"start","plugin":"a","text":"exit(5) in a, in Init for 0.0 s")"),
            end.record);
  EXPECT_EQ(end.record + "4\n", end.output);
}

/// The record of a process that crashes while another of its threads writes a line. None when the
/// process was held up for 100 ms: so long the crashed thread waits for the line.
std::optional<std::string> RecordWithAWriter() {
  constexpr std::int64_t longestWaitNs = 100'000'000;
  constexpr std::int64_t watchedNs = 20'000'000;
  const TemporaryFolder folder;
  const End end = EndOf(kNone, [&folder](SystemFile output) {
    const std::filesystem::path file = folder.Write("record", "");
    const SystemFile record = OpenForAppending(file);
    SetCrashRecord(file, file);
    SetCrashOutput(output, CrashOutput::kNothing);
    Latch isWriting;
    std::thread([&] {
      const RecordPermit permit;
      const std::int64_t begin = SteadyNanoseconds();
      isWriting.Arrive();
      while (SteadyNanoseconds() - begin < watchedNs && std::filesystem::is_empty(file)) {
      }
      WriteAll(record, "a line\n");
      if (SteadyNanoseconds() - begin >= longestWaitNs) WriteAll(output, "too late");
    }).detach();
    isWriting.Wait();
    std::exit(5);
  });
  EXPECT_EQ(4, end.status);
  if (end.output == "too late") return std::nullopt;
  return folder.Read("record");
}

TEST(CrashReport, FollowsALineOfTheRecordThatIsBeingWritten) {
  std::optional<std::string> record;
  for (int i = 0; i < 20 && !record; ++i) record = RecordWithAWriter();
  ASSERT_TRUE(record) << "the machine held the process up for 100 ms each time";
  EXPECT_EQ("a line\n{\"record\"", record->substr(0, 16));
}

TEST(CrashReport, IsNotMadeOfAnExitThatHubAnnounces) {
  const End end = EndOf(kErrors | kRecord, [](SystemFile) {
    AnnounceExit();
    _exit(7);
  });
  EXPECT_EQ(7, end.status);
  EXPECT_EQ("", end.errors);
  EXPECT_EQ("", end.record);
}

/// Loads the library of the plugin as the frame does.
HMODULE Load(const std::string& plugin, const std::string& path) {
  Track({Event(Kind::kLoadTaskBegin, plugin), Event(Kind::kLoadBegin, "", path)});
  const HMODULE library = LoadLibraryW(std::filesystem::path(path).wstring().c_str());
  Track({Event(Kind::kLoadSucceeded, "", path), Event(Kind::kStartCounted, plugin)});
  return library;
}

/// The end of the record's line when a thread has logged these events and code of the library of
/// the plugin a calls exit on it. The library stays mapped, and that of the plugin b.
std::string LineOfLibrary(const std::vector<FrameEvent>& events) {
  const End end = EndOf(kRecord, [&](SystemFile) {
    std::thread([&] {
      const HMODULE library = Load("a", TEV_FIXTURES "/init_exits.dll");
      Load("b", TEV_FIXTURES "/well_behaved.dll");
      Track(events);
      reinterpret_cast<bool (*)()>(GetProcAddress(library, "Init"))();
    }).join();
  });
  return end.record.substr(end.record.find(',', end.record.find("\"thread\"")));
}

/// Events of a plugin's stop that frees its library.
std::vector<FrameEvent> Freed(const std::string& plugin) {
  return {Event(Kind::kUnloadTaskBegin, plugin), Event(Kind::kFreeBegin),
          Event(Kind::kStopCounted, plugin)};
}

std::string OnAThreadOfA() {
  return ",\"plugin\":\"a\",\"text\":\"exit(0) in a, on a thread of its own\"}\n";
}

TEST(CrashReport, OfAThreadOfAPluginNamesItByItsLibrary) {
  EXPECT_EQ(OnAThreadOfA(), LineOfLibrary({}));
}

TEST(CrashReport, OfALibraryThatIsUnmappedSaysSo) {
  EXPECT_EQ(R"(,"plugin":"a","text":"exit(0) in code of a, whose library was unmapped at its )"
            "stop: a thread of it still ran\"}\n",
            LineOfLibrary(Freed("a")));
}

TEST(CrashReport, OfALibraryThatStaysMappedWhenItIsFreedIsOfAThreadOfThePlugin) {
  EXPECT_EQ(OnAThreadOfA(),
            LineOfLibrary({Event(Kind::kUnloadTaskBegin, "a"), Event(Kind::kFreeBegin),
                           Event(Kind::kFreeEnd), Event(Kind::kStopCounted, "a")}));
}

TEST(CrashReport, OfALibraryIsNotThatOfAnotherOneThatIsUnmapped) {
  EXPECT_EQ(OnAThreadOfA(), LineOfLibrary(Freed("b")));
}

TEST(CrashReport, OfAPluginsInitIsOfThatPluginUnlessTheCodeIsUnmapped) {
  const FrameEvent init = Event(Kind::kInitBegin, "b");
  const std::string phase = R"(,"phase":"start",)";
  EXPECT_EQ(phase + R"("plugin":"b","text":"exit(0) in b, in Init for 0.0 s"})" + "\n",
            LineOfLibrary({init}));
  std::vector<FrameEvent> events = Freed("a");
  events.push_back(init);
  EXPECT_EQ(phase + R"("plugin":"a","text":"exit(0) in code of a, whose library was unmapped at )"
                    "its stop: a thread of it still ran\"}\n",
            LineOfLibrary(events));
}

TEST(CrashReport, OfCodeThatIsBeingUnmappedOnItsOwnThreadIsOfTheStop) {
  EXPECT_EQ(R"(,"phase":"stop","plugin":"a","text":"exit(0) in a, being unmapped for 0.0 s"})"
            "\n",
            LineOfLibrary({Event(Kind::kUnloadTaskBegin, "a"), Event(Kind::kFreeBegin)}));
}

/// The end of the record's line when code of the library of the plugin a, which was loaded after
/// `count` others, calls exit.
std::string LineOfLibraryAfter(int count) {
  const End end = EndOf(kRecord, [&](SystemFile) {
    std::thread([&] {
      const std::string path = TEV_FIXTURES "/well_behaved.dll";
      Load("b", path);
      for (int i = 1; i < count; ++i) Track({Event(Kind::kLoadSucceeded, "", path)});
      const HMODULE library = Load("a", TEV_FIXTURES "/init_exits.dll");
      reinterpret_cast<bool (*)()>(GetProcAddress(library, "Init"))();
    }).join();
  });
  return end.record.substr(end.record.find(',', end.record.find("\"thread\"")));
}

TEST(CrashReport, KnowsTheLibrariesThatWereLoadedAsFourThousandAndNinetySixFirst) {
  EXPECT_EQ(OnAThreadOfA(), LineOfLibraryAfter(4095));
  EXPECT_EQ(",\"text\":\"exit(0) on a thread that runs no plugin's Init or UnInit\"}\n",
            LineOfLibraryAfter(4096));
}

TEST(CrashReport, OfNoPluginsCodeIsOfNoneOfTheirLibraries) {
  const End end = EndOf(kRecord, [](SystemFile) {
    Load("a", TEV_FIXTURES "/well_behaved.dll");
    std::exit(5);
  });
  EXPECT_EQ(Line(R"(,"text":"exit(5) on a thread that runs no plugin's Init or UnInit")"),
            end.record);
}

TEST(LoadedLibrary, IsTheLastOneOfTheThread) {
  EXPECT_EQ("", LoadedLibrary());
  Track({Event(Kind::kLoadBegin, "", "/bin/a.dll"), Event(Kind::kLoadBegin, "", "/bin/b.dll")});
  EXPECT_EQ("/bin/b.dll", LoadedLibrary());
  std::string ofAnother = "x";
  std::thread([&ofAnother] { ofAnother = LoadedLibrary(); }).join();
  EXPECT_EQ("", ofAnother);
}

}  // namespace
