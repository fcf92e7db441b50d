#include "workbench/record/LogRun.h"

#include <algorithm>
#include <utility>

#include "workbench/record/OneLine.h"

namespace {

using Kind = FrameEvent::Kind;

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kDay = std::int64_t{24} * 3600 * kSecond;
constexpr std::int64_t kLeapYear = 366 * kDay;
/// Lines of several threads are stamped before they are written, and so a little out of order.
constexpr std::int64_t kDisorder = 5 * kSecond;

/// About 127 years: with stamps until 2100 all times fit in 64 bits.
constexpr std::int64_t kMostShift = 4'000'000'000 * kSecond;

bool IsStartCount(Kind kind) {
  return kind == Kind::kStartCounted || kind == Kind::kStartFailedCounted ||
         kind == Kind::kStartCountedSomehow || kind == Kind::kStartAbandoned ||
         kind == Kind::kNotLoadedCounted || kind == Kind::kLoadSkipped;
}

bool IsStopCount(Kind kind) {
  return kind == Kind::kStopCounted || kind == Kind::kStopRefusedCounted ||
         kind == Kind::kStopCountedSomehow || kind == Kind::kNothingToStopCounted ||
         kind == Kind::kUnloadSkipped;
}

bool NamesPlugin(Kind kind) {
  return IsStartCount(kind) || IsStopCount(kind) || kind == Kind::kLoadTaskBegin ||
         kind == Kind::kInitBegin || kind == Kind::kInitSucceeded || kind == Kind::kInitFailed ||
         kind == Kind::kUnloadTaskBegin || kind == Kind::kUnInitBegin || kind == Kind::kUnInitEnd;
}

std::int64_t ResolutionOf(int digits) {
  std::int64_t resolution = kSecond;
  for (; digits > 0 && resolution > 1; --digits) resolution /= 10;
  return resolution;
}

}  // namespace

LogRun::LogRun(const std::vector<PluginHead>& plugins) {
  m_run.source = RecordedRun::Source::kLog;
  m_run.knowsTasks = false;
  m_run.knowsEdges = !plugins.empty();
  m_run.resolution = kSecond;
  m_run.record.plugins = plugins;
  m_source.SetPlugins(plugins);
  for (const PluginHead& plugin : plugins) {
    m_known.insert(plugin.id);
    const std::string text = OneLine(plugin.id);
    if (text != plugin.id) m_idByText.emplace(text, plugin.id);
  }
}

bool LogRun::EndsBefore(Kind kind) const {
  const auto seen = [&](Kind other) { return m_seen.count(other) != 0; };
  switch (kind) {
    case Kind::kPlatformInitialised:
    case Kind::kPlatformInitFailed:
      return m_hasFrameLines;
    case Kind::kManagerInitBegin:
      return seen(kind) || seen(Kind::kFrameStartBegin) || seen(Kind::kPluginsStartBegin);
    case Kind::kFrameStartBegin:
      return seen(kind) || seen(Kind::kPluginsStartBegin) || seen(Kind::kFrameStopBegin) ||
             seen(Kind::kPluginsStopBegin);
    case Kind::kPluginsStartBegin:
      return seen(kind);
    default:
      return false;
  }
}

/// When a line was logged, in nanoseconds that never decrease.
std::int64_t LogRun::At(const LogStamp& stamp) {
  m_run.resolution = std::min(m_run.resolution, ResolutionOf(stamp.digits));
  if (!m_first) {
    m_first = stamp;
    m_lastStamp = m_last = stamp.nanoseconds;
    return m_last;
  }
  const std::int64_t period = stamp.date == LogStamp::Date::kNone          ? kDay
                              : stamp.date == LogStamp::Date::kWithoutYear ? kLeapYear
                                                                           : 0;
  const std::int64_t back = m_lastStamp - stamp.nanoseconds;
  if (period > 0 && back > period / 2) {
    m_shift = std::min(m_shift + period, kMostShift);
  } else if (back > kDisorder) {
    m_shift = std::min(m_shift + back, kMostShift);
    m_setBack = std::min(m_setBack + back, kMostShift);
  }
  m_lastStamp = back > 0 && back <= kDisorder ? m_lastStamp : stamp.nanoseconds;
  m_last = std::max(m_last, stamp.nanoseconds + m_shift);
  return m_last;
}

void LogRun::AddHead(const LogStamp& stamp, const RunHead& head) {
  m_run.record.head = head;
  const std::vector<std::string>& words = head.commandLine;
  const bool fullSleep = std::find(words.begin(), words.end(), "--full-sleep") != words.end();
  m_run.record.head.sleep = fullSleep ? RunHead::kFullSleep : RunHead::kEarlySleep;
  m_hasHead = true;
  At(stamp);
}

void LogRun::AddFrame(const LogStamp& stamp, std::optional<std::uint64_t> thread,
                      FrameEvent event) {
  if (!m_hasFrameLines) {
    if (m_hasHead && !thread) return;
    m_hasFrameLines = true;
    m_run.knowsThreads = thread.has_value();
    m_beginIsMissing = event.kind != Kind::kPlatformInitialised &&
                       event.kind != Kind::kPlatformInitFailed && !m_hasHead;
  }
  if (m_run.knowsThreads && !thread) return;  // a line in another form, of another program
  const std::int64_t at = At(stamp);
  m_seen.insert(event.kind);
  CheckCount(event);
  if (!m_run.knowsThreads) thread = m_linePlugins.Take(event);
  NotePlugin(event);
  if (!thread) return;
  const auto id = m_idByText.find(event.plugin);
  if (id != m_idByText.end()) event.plugin = id->second;
  Observe(*thread, event.kind);
  AddPhaseOfInit(at, *thread, event);
  Add(m_source.OnFrameEvent({at, *thread}, event));
}

void LogRun::AddLoader(std::uint64_t thread, const std::string& text) {
  Add(m_source.OnLoaderMessage({m_last, thread}, text));
}

void LogRun::AddOther(std::uint64_t thread, const std::string& text) {
  Add(m_source.OnOtherLine({m_last, thread}, text));
}

void LogRun::Observe(std::uint64_t thread, Kind kind) {
  if (kind == Kind::kLoadBegin || kind == Kind::kInitBegin) {
    m_observed.insert(thread);
  } else if (kind == Kind::kInitSucceeded || kind == Kind::kInitFailed ||
             kind == Kind::kLoadFailed) {
    m_observed.erase(thread);
  }
}

void LogRun::NotePlugin(const FrameEvent& event) {
  if (!NamesPlugin(event.kind)) return;
  const auto id = m_idByText.find(event.plugin);
  const std::string& plugin = id == m_idByText.end() ? event.plugin : id->second;
  if (event.kind == Kind::kInitBegin) m_initBegun.insert(plugin);
  if (event.kind == Kind::kUnInitBegin) m_unInitBegun.insert(plugin);
  if (!m_known.insert(plugin).second) return;
  PluginHead& head = m_run.record.plugins.emplace_back();
  head.id = plugin;
  head.kind = "server";
}

/// The frame counts each phase's plugins from 1 without a gap.
void LogRun::CheckCount(const FrameEvent& event) {
  const bool start = IsStartCount(event.kind);
  if (!start && !IsStopCount(event.kind)) return;
  if (start && m_seen.count(Kind::kPluginsStopBegin) != 0) return;  // counted with the stop's
  const auto [last, isFirst] = m_lastCount.emplace(start, event.number);
  const bool stopBegan = m_seen.count(Kind::kPluginsStopBegin) != 0;
  if (!isFirst && event.number <= last->second && (start || stopBegan)) m_countsAreMixed = true;
  if (!isFirst && event.number > last->second + 1) m_countsHaveAGap = true;
  last->second = event.number;
}

/// The lines of Frame_Init that are the phase frame-init.
void LogRun::AddPhaseOfInit(std::int64_t at, std::uint64_t thread, const FrameEvent& event) {
  RunEvent made;
  made.phase = RunPhase::kFrameInit;
  made.thread = thread;
  made.nanoseconds = at;
  switch (event.kind) {
    case Kind::kPlatformInitialised:
      made.kind = RunEvent::Kind::kPhaseBegin;
      if (m_run.record.events.empty() && event.milliseconds >= 0) {
        made.nanoseconds -= std::min(event.milliseconds, kDay / kMillisecond) * kMillisecond;
      }
      break;
    case Kind::kFrameInitEnd:
    case Kind::kManagerInitFailed:
    case Kind::kPlatformInitFailed:
      made.kind = RunEvent::Kind::kPhaseEnd;
      made.milliseconds = event.milliseconds;
      break;
    default:
      return;
  }
  Add({made});
}

void LogRun::Add(std::vector<RunEvent> events) {
  for (RunEvent& event : events) {
    CorrectReason(event);
    m_run.record.events.push_back(std::move(event));
  }
}

/// Removes a reason that only follows from lines that may be missing.
void LogRun::CorrectReason(RunEvent& event) const {
  if (event.text.empty()) return;
  const bool init =
      event.kind == RunEvent::Kind::kInitEnd && event.result == RunEvent::Result::kFailed;
  const bool unInit =
      event.kind == RunEvent::Kind::kUnInitEnd && event.result == RunEvent::Result::kRefused;
  if (!init && !unInit) return;
  const bool begun = (init ? m_initBegun : m_unInitBegun).count(event.plugin) != 0;
  if (!begun) {
    event.text = "not known: the log does not contain the lines before its end";
  } else if (!m_run.knowsThreads && m_linePlugins.MayHaveLostReason(OneLine(event.plugin))) {
    event.text = "not known: the log does not say which plugin a line on the reason belongs to";
  }
}

RecordedRun LogRun::Finish() {
  RunHead& head = m_run.record.head;
  if (m_first) {
    head.time = TimeText(*m_first);
    head.zone = ZoneText(*m_first);
    head.run = head.time + (head.pid == 0 ? "" : "-" + std::to_string(head.pid));
  }
  std::vector<RunEvent>& events = m_run.record.events;
  std::int64_t begin = m_first ? m_first->nanoseconds : 0;
  if (!events.empty()) begin = std::min(begin, events.front().nanoseconds);
  for (RunEvent& event : events) {
    event.nanoseconds -= begin;
    if (!m_run.knowsThreads) event.thread = 0;
  }
  for (std::string& text : NotesOn(head)) m_run.notes.push_back(std::move(text));
  const auto note = [&](bool holds, const std::string& text) {
    if (holds) m_run.notes.push_back(text);
  };
  note(m_beginIsMissing, "the log does not contain the begin of this run");
  note(m_countsAreMixed,
       "the plugins' counts are not in order: lines are missing, or another process wrote to the "
       "same log at the same time; times and results may belong to either");
  note(m_countsHaveAGap,
       "the plugins' counts have a gap: lines are missing; what they say of plugins is not known");
  note(m_setBack > 0, "the stamps go back by " + std::to_string(m_setBack / kMillisecond) +
                          " ms; the time that passed there is not known and counts as 0");
  note(m_unstamped > 0,
       "lines of the frame without a time stamp were left out: " + std::to_string(m_unstamped));
  return std::move(m_run);
}
