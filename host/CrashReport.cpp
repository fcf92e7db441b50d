#include "host/CrashReport.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include "host/Commands.h"
#include "host/FixedText.h"
#include "host/RunClock.h"
#include "reference/os/CrashText.h"
#include "reference/os/LocalText.h"
#include "reference/os/Modules.h"
#include "reference/os/SystemFile.h"
#include "reference/os/Threads.h"

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{10};
constexpr std::int64_t kLongestAnswerNs = 3'000'000'000;

constexpr char kLoading[] = "loading";
constexpr char kInInit[] = "in Init";

/// Which plugin's code a thread runs. Written and read by that thread alone.
struct PluginCode {
  FixedText plugin;
  const char* phase = nullptr;  // null: none
  std::int64_t sinceNs = 0;
};

thread_local PluginCode t_code;
thread_local FixedText t_path;  // of the library that was loaded last

/// Where a plugin's library is, or was, mapped. Kept after the unmapping, so that a crash in code
/// that is no longer mapped can be explained.
struct MappedLibrary {
  FixedText plugin;
  std::string path;  // not for the crash handler
  std::atomic<std::uintptr_t> begin{0};
  std::atomic<std::uintptr_t> end{0};
  std::atomic<bool> unmapped{false};
};

/// Filled from the front, each entry by one thread. `g_mapped` counts the complete entries, those
/// that are being filled, whose `end` is still 0, and the libraries for which there is no entry.
std::array<MappedLibrary, 4096> g_libraries;
std::atomic<std::size_t> g_mapped{0};

std::atomic<int> g_writers{0};  // threads that hold a RecordPermit, or are constructing one
std::atomic<bool> g_crashed{false};

std::atomic<SystemFile> g_record{kNoFile};
FixedText g_recordPath;

/// What is reported about the crash. Written by the crashed thread before it sets g_reported.
struct CrashFacts {
  CrashText sentence;
  FixedText plugin;
  const char* phase = "";
  std::int64_t nanoseconds = 0;
  std::uint64_t thread = 0;
  std::int64_t exitStatus = -1;  // -1: a signal ends the process
};
CrashFacts g_crash;
std::atomic<bool> g_reported{false};

// Written by SetCrashOutput, before any plugin's code runs.
SystemFile g_output = kNoFile;
CrashOutput g_outputKind = CrashOutput::kNothing;
std::uint64_t g_runThread = 0;

/// Which thread writes the end of the run to standard output; kWritten once that is done.
enum class LastOutput { kNobody, kRun, kCrashReport, kWritten };
std::atomic<LastOutput> g_lastOutput{LastOutput::kNobody};

void BeginCode(const std::string& plugin, const char* phase) {
  t_code.phase = nullptr;
  t_code.plugin.Set(plugin);
  t_code.sinceNs = SteadyNanoseconds();
  t_code.phase = phase;
}

void AddMapped(const std::string& path) {
  const auto range = LoadedModule(path);
  if (!range) return;
  const std::size_t mine = g_mapped.fetch_add(1);
  if (mine >= g_libraries.size()) return;
  g_libraries[mine].plugin.Set(t_code.plugin.View());
  g_libraries[mine].path = path;
  g_libraries[mine].begin = range->begin;
  g_libraries[mine].end = range->end;
}

/// Called before and after a library is freed. Before: other threads may crash in it before the
/// frame logs that it is freed. After: it may still be mapped, if something else has loaded it.
void MarkUnmapped(bool isFreed) {
  const std::size_t count = std::min(g_mapped.load(), g_libraries.size());
  for (std::size_t i = 0; i < count; ++i) {
    MappedLibrary& library = g_libraries[i];
    const bool mine = library.end != 0 && library.plugin.View() == t_code.plugin.View();
    if (mine) library.unmapped = !isFreed || !LoadedModule(library.path);
  }
}

/// The library that contains an address; the last one, when several were mapped there in turn.
const MappedLibrary* LibraryAt(const void* address) {
  const auto at = reinterpret_cast<std::uintptr_t>(address);
  const std::size_t count = std::min(g_mapped.load(), g_libraries.size());
  for (std::size_t i = count; i > 0; --i) {
    const MappedLibrary& library = g_libraries[i - 1];
    if (at >= library.begin && at < library.end) return &library;
  }
  return nullptr;
}

void AddSeconds(CrashText& text, std::int64_t nanoseconds) {
  const std::int64_t tenths = nanoseconds / 100'000'000;
  text.AddNumber(tenths / 10).Add(".").AddNumber(tenths % 10).Add(" s");
}

/// The plugin library whose code crashed or called the code that crashed.
const MappedLibrary* CrashedLibrary(const Crash& crash) {
  const MappedLibrary* library = LibraryAt(crash.address);
  if (library != nullptr || t_code.phase != nullptr) return library;
  return LibraryAt(FindInCrashStack([](const void* code) { return LibraryAt(code) != nullptr; }));
}

/// Appends whose code crashed to the sentence, and sets the plugin's name.
void AddCodeOwner(CrashText& text, FixedText& plugin, const Crash& crash) {
  if (crash.sent) return;
  const MappedLibrary* library = CrashedLibrary(crash);
  const bool isOfThisThread = t_code.phase != nullptr && library != nullptr &&
                              library->plugin.View() == t_code.plugin.View();
  if (library != nullptr && library->unmapped && !isOfThisThread) {
    plugin = library->plugin;
    text.Add(" in code of ")
        .AddEscaped(plugin.View())
        .Add(", whose library was unmapped at its stop: a thread of it still ran");
    return;
  }
  if (t_code.phase != nullptr) {
    plugin = t_code.plugin;
    text.Add(" in ").AddEscaped(plugin.View()).Add(", ").Add(t_code.phase).Add(" for ");
    AddSeconds(text, SteadyNanoseconds() - t_code.sinceNs);
    return;
  }
  if (library != nullptr) {
    plugin = library->plugin;
    text.Add(" in ").AddEscaped(plugin.View()).Add(", on a thread of its own");
    return;
  }
  text.Add(" on a thread that runs no plugin's Init or UnInit");
}

/// The length of the UTF-8 character at the start of `text`; 0 when there is no valid one.
std::size_t CharacterBytes(std::string_view text) {
  const auto first = static_cast<unsigned char>(text.front());
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  const std::size_t count = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (count > text.size()) return 0;
  for (std::size_t i = 1; i < count; ++i) {
    if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U) return 0;
  }
  return count;
}

/// Appends `text` as the inside of a JSON string. `text` may end in the middle of a character.
void AddJson(CrashText& line, std::string_view text) {
  while (!text.empty()) {
    const std::size_t bytes = CharacterBytes(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(bytes, 1));
    if (bytes == 0 || static_cast<unsigned char>(character.front()) < 0x20) {
      line.Add("\xEF\xBF\xBD");  // U+FFFD
    } else {
      if (character == "\"" || character == "\\") line.Add("\\");
      line.Add(character);
    }
    text.remove_prefix(character.size());
  }
}

/// Waits until no other thread writes to the record; g_crashed keeps new writers out. The wait is
/// limited, since this thread may itself have crashed while it was writing.
void WaitForRecordWriters() {
  constexpr std::int64_t longestWaitNs = 100'000'000;
  const std::int64_t begin = SteadyNanoseconds();
  while (g_writers != 0 && SteadyNanoseconds() - begin < longestWaitNs) {
  }
}

const char* PhaseOf(const char* code) {
  if (code == nullptr) return "";
  const bool isOfTheStart = std::strcmp(code, kLoading) == 0 || std::strcmp(code, kInInit) == 0;
  return isOfTheStart ? RunPhase::kStart : RunPhase::kStop;
}

void CollectFacts(const Crash& crash) {
  constexpr std::size_t longestWhat = 500;  // bytes of an exception's text, to leave room after it
  g_crash.sentence.AddEscaped(std::string_view(crash.what).substr(0, longestWhat));
  AddCodeOwner(g_crash.sentence, g_crash.plugin, crash);
  g_crash.phase = PhaseOf(t_code.phase);
  g_crash.nanoseconds = SteadyNanoseconds();
  g_crash.thread = ThreadNumber();
  const bool isExit = crash.kind == Crash::Kind::kExit || crash.kind == Crash::Kind::kImmediateExit;
  g_crash.exitStatus = isExit ? static_cast<int>(kCutShort) : -1;
}

/// Writes the crash's line of the record.
void WriteEvent(SystemFile file) {
  CrashText line;
  line.Add(R"({"record":"event","event":"crash","ns":)").AddNumber(g_crash.nanoseconds);
  line.Add(R"(,"thread":)").AddNumber(static_cast<std::int64_t>(g_crash.thread));
  if (*g_crash.phase != '\0') line.Add(R"(,"phase":")").Add(g_crash.phase).Add("\"");
  if (!g_crash.plugin.View().empty()) {
    line.Add(R"(,"plugin":")");
    AddJson(line, g_crash.plugin.View());
    line.Add("\"");
  }
  line.Add(R"(,"text":")");
  AddJson(line, g_crash.sentence.View());
  line.Add("\"}\n");
  WriteCrashText(file, line.View());
}

void WriteRecord() {
  const SystemFile record = g_record;
  if (record == kNoFile) return;
  WaitForRecordWriters();
  WriteEvent(record);
}

/// Writes the object of `run --json`, with null for everything that needs the heap or a lock.
void WriteObject(SystemFile file) {
  CrashText begin;
  begin.Add(R"({"schema":2,"product":null,"status":"crashed","sentence":"crashed: )");
  AddJson(begin, g_crash.sentence.View());
  begin.Add(R"(","exitStatus":)");
  CrashText end;
  if (g_crash.exitStatus < 0) {
    end.Add("null");
  } else {
    end.AddNumber(g_crash.exitStatus);
  }
  end.Add(R"(,"totals":null,"Frame_Init":null,"Frame_Start":null,"CallbackResult":null,)")
      .Add(R"("LoadState":null,"Handles":null,"Timing":null,"Notified":null,"phases":null,)")
      .Add(R"("plugins":null,"findings":null,"record":)");
  if (g_recordPath.View().empty()) {
    end.Add("null}\n");
  } else {
    end.Add("\"");
    AddJson(end, g_recordPath.View());
    end.Add("\"}\n");
  }
  if (WriteCrashText(file, begin.View())) WriteCrashText(file, end.View());
}

bool WaitFor(LastOutput state) {
  const std::int64_t begin = SteadyNanoseconds();
  while (g_lastOutput != state) {
    if (SteadyNanoseconds() - begin > kLongestAnswerNs) return false;
    std::this_thread::sleep_for(kBetweenLooks);
  }
  return true;
}

/// Lets the run's thread write the end of the run to standard output; if it cannot, writes what is
/// possible from here.
void CompleteOutput(const Crash& crash) {
  g_reported = true;
  const bool runCanWrite = g_runThread != 0 && !crash.alone && g_runThread != ThreadNumber();
  if (runCanWrite && WaitFor(LastOutput::kWritten)) return;
  LastOutput nobody = LastOutput::kNobody;
  if (!g_lastOutput.compare_exchange_strong(nobody, LastOutput::kCrashReport)) return;
  if (g_output == kNoFile) return;
  if (g_outputKind == CrashOutput::kObject) WriteObject(g_output);
  if (g_outputKind == CrashOutput::kEvent) WriteEvent(g_output);
}

/// Returns false when standard error cannot be written.
bool WriteStandardError() {
  CrashText text;
  text.Add("\nHUB: the process ends: ").Add(g_crash.sentence.View()).Add("\n");
  if (!WriteCrashText(StandardError(), text.View())) return false;
  if (g_recordPath.View().empty()) return true;
  CrashText record;
  record.Add("HUB: the record of this run: ").Add(g_recordPath.View()).Add("\n");
  return WriteCrashText(StandardError(), record.View());
}

/// Writes the record first, since writing to standard error may block.
void Report(const Crash& crash) noexcept {
  g_crashed = true;
  CollectFacts(crash);
  WriteRecord();
  if (WriteStandardError()) WriteCrashStack(StandardError());
  CompleteOutput(crash);
}

}  // namespace

void InstallCrashReport() {
  InstallCrashHandler(&Report, kCutShort);
  std::atexit(&ReportUnexpectedExit);
}

void SetCrashRecord(const std::filesystem::path& file, const std::filesystem::path& record) {
  g_recordPath.Set(LocalFromPath(record));
  if (!file.empty()) g_record = OpenForAppending(file);
}

void SetCrashOutput(SystemFile output, CrashOutput kind) {
  g_output = output;
  g_outputKind = kind;
  g_runThread = ThreadNumber();
}

std::optional<RunEvent> ReportedCrash() {
  if (!g_crashed) return std::nullopt;
  while (!g_reported) std::this_thread::sleep_for(kBetweenLooks);
  RunEvent crash;
  crash.kind = RunEvent::Kind::kCrash;
  crash.nanoseconds = g_crash.nanoseconds;
  crash.thread = g_crash.thread;
  crash.phase = g_crash.phase;
  crash.plugin = g_crash.plugin.View();
  crash.text = g_crash.sentence.View();
  crash.number = g_crash.exitStatus;
  return crash;
}

bool ClaimLastOutput() {
  LastOutput nobody = LastOutput::kNobody;
  return g_lastOutput.compare_exchange_strong(nobody, LastOutput::kRun);
}

void LastOutputIsWritten() {
  g_lastOutput = LastOutput::kWritten;
}

void AnnounceExit() {
  while (g_crashed) std::this_thread::sleep_for(std::chrono::hours(1));
  ExpectExit();
}

RecordPermit::RecordPermit() {
  ++g_writers;
  m_granted = !g_crashed;
}

RecordPermit::~RecordPermit() {
  --g_writers;
}

void TrackPluginCode(const FrameEvent& event) {
  using Kind = FrameEvent::Kind;
  switch (event.kind) {
    case Kind::kLoadTaskBegin:
      return BeginCode(event.plugin, kLoading);
    case Kind::kUnloadTaskBegin:
      return BeginCode(event.plugin, "stopping");
    case Kind::kInitBegin:
      return BeginCode(event.plugin, kInInit);
    case Kind::kUnInitBegin:
      return BeginCode(event.plugin, "in UnInit");
    case Kind::kFreeBegin:
      MarkUnmapped(false);
      return BeginCode(std::string(t_code.plugin.View()), "being unmapped");
    case Kind::kLoadBegin:
      t_path.Set(event.path);
      return;
    case Kind::kLoadSucceeded:
      return AddMapped(event.path);
    case Kind::kFreeEnd:
      return MarkUnmapped(true);
    case Kind::kStartCounted:
    case Kind::kStartAbandoned:
    case Kind::kNotLoadedCounted:
    case Kind::kLoadSkipped:
    case Kind::kStopCounted:
    case Kind::kStopRefusedCounted:
    case Kind::kNothingToStopCounted:
    case Kind::kNamelessNotCounted:
      t_code.phase = nullptr;
      return;
    default:
      return;
  }
}

std::string LoadedLibrary() {
  return std::string(t_path.View());
}
