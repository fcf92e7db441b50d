#include "host/CrashReport.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include "host/Commands.h"
#include "host/RunClock.h"
#include "reference/os/CrashText.h"
#include "reference/os/LocalText.h"
#include "reference/os/Modules.h"
#include "reference/os/SystemFile.h"
#include "reference/os/Threads.h"

namespace {

constexpr char kLoading[] = "loading";
constexpr char kInInit[] = "in Init";

/// A text that a crash handler can read: no heap.
class FixedText {
 public:
  void Set(std::string_view text) { m_size = text.copy(m_text.data(), m_text.size()); }
  std::string_view View() const { return {m_text.data(), m_size}; }

 private:
  std::size_t m_size = 0;
  std::array<char, 1024> m_text{};
};

/// The plugin's code that a thread runs. Written and read by that thread alone.
struct PluginCode {
  FixedText plugin;
  const char* phase = nullptr;  // null: none
  std::int64_t sinceNs = 0;
};

thread_local PluginCode t_code;
thread_local std::string t_path;  // of the library that was loaded last; not for the crash handler

/// Where a plugin's library is, or was, mapped. Never removed: that code of an unmapped one runs is
/// worth telling.
struct MappedLibrary {
  FixedText plugin;
  std::string path;  // not for the crash handler
  std::atomic<std::uintptr_t> begin{0};
  std::atomic<std::uintptr_t> end{0};
  std::atomic<bool> unmapped{false};
};

/// Filled from the front, each entry by one thread; `g_mapped` counts those that are complete or
/// being filled, of which the latter have no end yet.
std::array<MappedLibrary, 4096> g_libraries;
std::atomic<std::size_t> g_mapped{0};

std::atomic<int> g_writers{0};  // threads that hold a permit, or are asking for one
std::atomic<bool> g_crashed{false};

std::atomic<SystemFile> g_record{kNoFile};
FixedText g_recordPath;

void BeginCode(const std::string& plugin, const char* phase) {
  t_code.phase = nullptr;
  t_code.plugin.Set(plugin);
  t_code.sinceNs = SteadyNanoseconds();
  t_code.phase = phase;
}

void EnterMapped(const std::string& path) {
  const auto range = LoadedModule(path);
  const std::size_t at = g_mapped.load();
  if (!range || at >= g_libraries.size()) return;
  const std::size_t mine = g_mapped.fetch_add(1);
  if (mine >= g_libraries.size()) return;
  g_libraries[mine].plugin.Set(t_code.plugin.View());
  g_libraries[mine].path = path;
  g_libraries[mine].begin = range->begin;
  g_libraries[mine].end = range->end;
}

/// Before and after a library is freed: other threads may crash in it before the frame says that it
/// has been freed, and it may still be mapped then, when somebody else holds it too.
void EnterUnmapped(bool isFreed) {
  const std::size_t count = std::min(g_mapped.load(), g_libraries.size());
  for (std::size_t i = 0; i < count; ++i) {
    MappedLibrary& library = g_libraries[i];
    const bool mine = library.end != 0 && library.plugin.View() == t_code.plugin.View();
    if (mine) library.unmapped = !isFreed || !LoadedModule(library.path);
  }
}

/// The library around an address; of several that lay there one after the other, the last.
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

/// Whose code it was, as the end of the sentence. Gives the plugin's name in `plugin`.
void AddWhose(CrashText& text, const Crash& crash, std::string_view& plugin) {
  const MappedLibrary* library = LibraryAt(crash.address);
  const bool isThreads = t_code.phase != nullptr && library != nullptr &&
                         library->plugin.View() == t_code.plugin.View();
  if (library != nullptr && library->unmapped && !isThreads) {
    plugin = library->plugin.View();
    text.Add(" in code of ")
        .AddEscaped(plugin)
        .Add(", whose library was unmapped at its stop: a thread of it still ran");
    return;
  }
  if (t_code.phase != nullptr) {
    plugin = t_code.plugin.View();
    text.Add(" in ").AddEscaped(plugin).Add(", ").Add(t_code.phase).Add(" for ");
    AddSeconds(text, SteadyNanoseconds() - t_code.sinceNs);
    return;
  }
  if (library != nullptr) {
    plugin = library->plugin.View();
    text.Add(" in ").AddEscaped(plugin).Add(", on a thread of its own");
    return;
  }
  text.Add(" on a thread that runs no plugin's Init or UnInit");
}

/// A text inside a JSON string. Texts from outside may be cut inside a character.
void AddJson(CrashText& line, std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') line.Add("\\");
    if (byte < 0x20 || byte >= 0x7f) {
      line.Add("?");
    } else {
      line.Add({&c, 1});
    }
  }
}

/// A plugin's ID inside a JSON string: it is UTF-8, as the model file that it comes from.
void AddJsonID(CrashText& line, std::string_view id) {
  for (const char c : id) {
    if (c == '"' || c == '\\') line.Add("\\");
    line.Add({&c, 1});
  }
}

/// Lets nobody else write to the record any more, and lets those who are writing finish; not for
/// long, as this thread may be one of them.
void CloseRecordToOthers() {
  constexpr std::int64_t longestWaitNs = 100'000'000;
  const std::int64_t begin = SteadyNanoseconds();
  while (g_writers != 0 && SteadyNanoseconds() - begin < longestWaitNs) {
  }
}

bool IsOfTheStart(std::string_view phase) {
  return phase == kLoading || phase == kInInit;
}

void WriteRecord(std::string_view sentence, std::string_view plugin) {
  const SystemFile record = g_record;
  if (record == kNoFile) return;
  CloseRecordToOthers();
  CrashText line;
  line.Add(R"({"record":"event","event":"crash","ns":)").AddNumber(SteadyNanoseconds());
  line.Add(R"(,"thread":)").AddNumber(static_cast<std::int64_t>(ThreadNumber()));
  if (t_code.phase != nullptr) {
    line.Add(R"(,"phase":")").Add(IsOfTheStart(t_code.phase) ? "start" : "stop").Add("\"");
  }
  if (!plugin.empty()) {
    line.Add(R"(,"plugin":")");
    AddJsonID(line, plugin);
    line.Add("\"");
  }
  line.Add(R"(,"text":")");
  AddJson(line, sentence);
  line.Add("\"}\n");
  WriteCrashText(record, line.View());
}

/// The record first: standard error may be a pipe that nobody reads.
void Report(const Crash& crash) noexcept {
  constexpr std::size_t longestWhat = 500;  // of an exception's text; the rest must fit behind it
  g_crashed = true;
  std::string_view plugin;
  CrashText sentence;
  sentence.AddEscaped(std::string_view(crash.what).substr(0, longestWhat));
  AddWhose(sentence, crash, plugin);
  WriteRecord(sentence.View(), plugin);
  CrashText text;
  text.Add("\nHUB: the process ends: ").Add(sentence.View()).Add("\n");
  WriteCrashText(StandardError(), text.View());
  if (!g_recordPath.View().empty()) {
    CrashText record;
    record.Add("HUB: the record of this run: ").Add(g_recordPath.View()).Add("\n");
    WriteCrashText(StandardError(), record.View());
  }
  WriteCrashStack(StandardError());
}

}  // namespace

void InstallCrashReport() {
  InstallCrashHandler(&Report, kCutShort);
}

void SetCrashRecord(const std::filesystem::path& record) {
  const SystemFile before = g_record.exchange(kNoFile);
  if (before != kNoFile) CloseFile(before);
  g_recordPath.Set(LocalFromPath(record));
  if (!record.empty()) g_record = OpenForAppending(record);
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

void FollowPluginCode(const FrameEvent& event) {
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
      EnterUnmapped(false);
      return BeginCode(std::string(t_code.plugin.View()), "being unmapped");
    case Kind::kLoadBegin:
      t_path = event.path;
      return;
    case Kind::kLoadSucceeded:
      return EnterMapped(event.path);
    case Kind::kFreeEnd:
      return EnterUnmapped(true);
    case Kind::kStartCounted:
    case Kind::kStartAbandoned:
    case Kind::kNotLoadedCounted:
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
  return t_path;
}
