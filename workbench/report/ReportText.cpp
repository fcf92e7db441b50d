#include "workbench/report/ReportText.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "workbench/output/Text.h"
#include "workbench/record/RunOutcome.h"
#include "workbench/report/StartEdges.h"
#include "workbench/report/Times.h"

namespace {

using Result = PluginSpan::Result;

constexpr std::size_t kLeastSlack = 10;
constexpr std::size_t kMostNames = 5;
constexpr char kBold[] = "\x1b[1m";
constexpr char kRed[] = "\x1b[31m";
constexpr char kPlain[] = "\x1b[0m";

const char* PhaseTitle(const std::string& name) {
  if (name == RunPhase::kFrameInit) return "Frame_Init";
  if (name == RunPhase::kPlatformStart) return "start of the platform";
  if (name == RunPhase::kStart) return "start of the plugins";
  if (name == RunPhase::kFrameStop) return "Frame_Stop";
  if (name == RunPhase::kStop) return "  stop of the plugins";
  if (name == RunPhase::kPlatformStop) return "  stop of the platform";
  return name == RunPhase::kFrameUnInit ? "Frame_UnInit" : name.c_str();
}

class Writer {
 public:
  Writer(const Timeline& timeline, const ReportStyle& style)
      : m_timeline(timeline), m_style(style) {}

  std::string Write() {
    Head();
    Phases();
    Phase(m_timeline.start, "start", "the start");
    Phase(m_timeline.stop, "stop", "the stop");
    Failures();
    StartedAnyways();
    NotReturneds();
    NeverBegun();
    return m_text;
  }

 private:
  // ---------------------------------------------------------------- lines

  void Line(const std::string& text) {
    const std::string whole = m_style.columns == 0 ? text : CutToColumns(text, m_style.columns);
    m_text += whole.substr(0, whole.find_last_not_of(' ') + 1) + "\n";
  }

  void Sentence(const std::string& text, const char* color = nullptr) {
    for (const std::string& line : Wrapped(text, m_style.columns, kSentenceIndent)) {
      m_text += (m_style.color && color != nullptr ? color + line + kPlain : line) + "\n";
    }
  }

  void Title(const std::string& text) {
    m_text += "\n";
    Sentence(text, kBold);
  }

  std::string Name(std::size_t plugin) const { return ShownID(m_timeline.plugins[plugin].id); }

  std::string Names(const std::vector<std::size_t>& plugins) const {
    std::vector<std::string> names;
    names.reserve(plugins.size());
    for (const std::size_t plugin : plugins) names.push_back(m_timeline.plugins[plugin].id);
    return JoinNames(names, kMostNames);
  }

  std::string Ms(std::int64_t nanoseconds) const {
    return MsText(nanoseconds, m_timeline.run.resolution);
  }

  /// Until when the times of what has not ended reach.
  std::string UntilTheLast() const {
    if (m_timeline.run.now > 0) return "until now";
    return IsLog() ? "until the log ends" : "until the record ends";
  }

  bool IsLog() const { return m_timeline.run.source == RecordedRun::Source::kLog; }

  /// The time since the phase began.
  std::string Since(const PhaseTimeline& phase, std::int64_t time) const {
    return time == kUnknown ? "-" : Ms(std::max<std::int64_t>(time - phase.begin, 0));
  }

  // ---------------------------------------------------------------- parts

  void Head() {
    const RunHead& head = m_timeline.run.record.head;
    std::string product = Escaped(head.product);
    if (!head.productVersion.empty()) product += " " + Escaped(head.productVersion);
    if (product.empty()) product = "A product";
    std::string line = product + ", run of " + (head.time.empty() ? "an unknown time" : head.time);
    if (!head.path.empty()) line += ", " + Escaped(head.path);
    Sentence(line, kBold);
    Sentence(HowItEnded(m_timeline));
    std::string from =
        fmt::format("From {} {}", IsLog() ? "the log" : "the record", Escaped(m_timeline.run.name));
    if (IsLog()) {
      from += fmt::format(", whose times are exact to {} ms",
                          static_cast<double>(m_timeline.run.resolution) / 1e6);
      from += NotKnown();
    }
    if (m_timeline.run.record.unreadableLines != 0) {
      from += "; " + Count(m_timeline.run.record.unreadableLines, "unreadable line");
    }
    Sentence(from);
    for (const std::string& note : m_timeline.run.notes) Sentence("note: " + Escaped(note));
  }

  /// "; not known: threads, dependencies": what the run does not say.
  std::string NotKnown() const {
    std::vector<std::string> missing;
    if (!m_timeline.run.knowsTasks) missing.emplace_back("when tasks were posted");
    if (!m_timeline.run.knowsThreads) missing.emplace_back("threads");
    if (!m_timeline.run.knowsEdges) missing.emplace_back("dependencies (--bin DIR gives them)");
    return missing.empty() ? "" : "; not known: " + JoinNames(missing, missing.size());
  }

  void Phases() {
    if (m_timeline.state.Phases().empty()) return;
    Title("Phases, in ms");
    for (const RunState::Phase& phase : m_timeline.state.Phases()) {
      const bool ended = phase.endNs >= 0;
      Line("  " + PadRight(PhaseTitle(phase.name), 24) +
           PadLeft(ended ? Ms(phase.endNs - phase.beginNs) : "not ended", 10));
    }
    if (m_timeline.state.Up()) {
      Line("  " + PadRight("up after Frame_Start", 24) +
           PadLeft(std::to_string(m_timeline.state.Up()->milliseconds), 10));
    }
  }

  void Phase(const PhaseTimeline& phase, const std::string& name, const std::string& the) {
    if (!phase.begun) return;
    Balance(phase, name);
    Path(phase, the);
    Slack(phase);
  }

  void Balance(const PhaseTimeline& phase, const std::string& name) {
    const TimeBalance& balance = phase.balance;
    const std::string title = "The " + name + " of the plugins: " + Ms(balance.wall) + " ms";
    const bool isStart = &phase == &m_timeline.start;
    if (!phase.ended) {
      Title(title + " " + UntilTheLast() + "; it has not ended");
    } else {
      Title(title + (phase.IsComplete(isStart) ? "" : ", and not all of its plugins had ended"));
    }
    if (phase.path.empty()) {
      Sentence(m_timeline.run.knowsEdges
                   ? "  no plugin began"
                   : "  critical path and waiting: not known, since the dependencies are not");
    } else {
      Parts(balance);
    }
    Sentence(fmt::format("  all plugins together worked {} ms, {:.1f} at the same time on average",
                         Ms(balance.work), balance.Parallelism()));
  }

  /// "2605.4 ms = critical path 1508.2 (57.9%) + ...": the parts add up to the whole as shown.
  void Parts(const TimeBalance& balance) {
    std::vector<std::int64_t> parts = {balance.path, balance.look, balance.idle};
    std::vector<const char*> names = {"critical path", "waiting for the next look", "idle"};
    if (!m_timeline.run.knowsTasks) {
      parts = {balance.path, balance.look + balance.idle};
      names = {"critical path", "waiting for looks and threads"};
    }
    const std::vector<std::string> texts = MsTexts(parts, m_timeline.run.resolution);
    std::string line = "  " + Ms(balance.wall) + " ms =";
    for (std::size_t i = 0; i < parts.size(); ++i) {
      line += fmt::format("{} {} {} ({})", i == 0 ? "" : " +", names[i], texts[i],
                          ShareText(parts[i], balance.wall));
    }
    Sentence(line);
  }

  void Path(const PhaseTimeline& phase, const std::string& the) {
    if (phase.path.empty()) return;
    const bool tasks = m_timeline.run.knowsTasks;
    Title("Critical path of " + the + ", in ms: each plugin waits for the one above it, then for " +
          (tasks ? "the next look and for a thread (idle)" : "a look and a thread"));
    Line(PadLeft("begins", 11) + PadLeft(tasks ? "look" : "waits", 10) +
         (tasks ? PadLeft("idle", 10) : "") + PadLeft("works", 10) + PadLeft("share", 8) +
         "  plugin");
    for (const PathStep& step : phase.path) {
      const PluginSpan& span = phase.spans[step.plugin];
      const std::string waits = tasks ? PadLeft(Ms(step.look), 10) + PadLeft(Ms(step.idle), 10)
                                      : PadLeft(Ms(step.look + step.idle), 10);
      Line(PadLeft(Since(phase, span.begin), 11) + waits + PadLeft(Ms(step.work), 10) +
           PadLeft(ShareText(step.work, phase.balance.wall), 8) + "  " + Name(step.plugin) +
           (span.HasEnded() ? "" : ", which has not ended"));
    }
    if (phase.lastWait > 0) {
      const bool isIdle = tasks && !phase.EndsWithLook();
      Line(PadLeft("", 11) + PadLeft(Ms(phase.lastWait), isIdle ? 20 : 10) +
           PadLeft("", isIdle || !tasks ? 18 : 28) +
           (phase.EndsWithLook() ? "  until the frame looked"
            : phase.ended        ? "  until it ended without the plugins that never began"
                                 : "  " + UntilTheLast()));
    }
  }

  void Slack(const PhaseTimeline& phase) {
    std::vector<std::size_t> plugins;
    for (std::size_t i = 0; i < phase.spans.size(); ++i) {
      const bool onPath = std::any_of(phase.path.begin(), phase.path.end(),
                                      [i](const PathStep& step) { return step.plugin == i; });
      if (phase.spans[i].slack != kUnknown && !onPath) plugins.push_back(i);
    }
    if (plugins.empty()) return;
    std::stable_sort(plugins.begin(), plugins.end(), [&](std::size_t a, std::size_t b) {
      return phase.spans[a].slack < phase.spans[b].slack;
    });
    if (plugins.size() > kLeastSlack) plugins.resize(kLeastSlack);
    Title(
        "Least slack beside it, in ms: so much later a plugin could have ended without moving it");
    Line("      slack     works  plugin");
    for (const std::size_t plugin : plugins) {
      const PluginSpan& span = phase.spans[plugin];
      Line(PadLeft(Ms(span.slack), 11) + PadLeft(Ms(span.end - span.begin), 10) + "  " +
           Name(plugin));
    }
  }

  void Failures() {
    bool first = true;
    for (std::size_t i = 0; i < m_timeline.plugins.size(); ++i) {
      const PluginRun& plugin = m_timeline.State(i);
      const bool failed = plugin.started == PluginRun::State::kInitFailed ||
                          plugin.started == PluginRun::State::kNotLoaded ||
                          plugin.state == PluginRun::State::kStopRefused;
      if (!failed) continue;
      if (std::exchange(first, false)) Title("Failures");
      const char* what = plugin.state == PluginRun::State::kStopRefused   ? "STOP REFUSED"
                         : plugin.started == PluginRun::State::kNotLoaded ? "NOT LOADED"
                                                                          : "INIT FAILED";
      Sentence("  " + Name(i) + ": " + what + ": " + Escaped(ReasonText(plugin)), kRed);
    }
  }

  void StartedAnyways() {
    const std::vector<StartedAnyway> plugins = FindStartedAnyway(m_timeline);
    if (plugins.empty()) return;
    Title("Started although a dependency had failed");
    for (const StartedAnyway& plugin : plugins) {
      Sentence("  " + Name(plugin.plugin) + ", which depends on " + Names(plugin.failed));
    }
  }

  void NotReturneds() {
    const std::vector<NotReturned> plugins = FindNotReturned(m_timeline);
    const char* title = m_timeline.run.now > 0 ? "Not returned yet"
                        : IsLog()              ? "Not returned in this log"
                                               : "Never returned";
    if (!plugins.empty()) Title(title);
    for (const NotReturned& plugin : plugins) {
      std::string line = fmt::format("  {}, {} for {} ms{}", Name(plugin.plugin),
                                     WhereText(plugin.where), Ms(m_timeline.last - plugin.since),
                                     m_timeline.run.now > 0 ? " by now"
                                     : IsLog()              ? " when the log ended"
                                                            : " when the record ended");
      if (!plugin.waiting.empty()) {
        line += fmt::format("; {} for it: {}",
                            plugin.waiting.size() == 1
                                ? std::string("1 plugin waits")
                                : fmt::format("{} plugins wait", plugin.waiting.size()),
                            Names(plugin.waiting));
      }
      Sentence(line, kRed);
    }
  }

  void NeverBegun() {
    const std::vector<std::size_t> never = FindNeverBegun(m_timeline, m_timeline.start);
    if (never.empty()) return;
    Title(m_timeline.run.now > 0 ? "Not begun yet"
          : IsLog()              ? "Not begun in this log"
                                 : "Never begun");
    const DependencyLists& waitsFor = m_timeline.start.waitsFor;
    const std::vector<std::size_t> numbers = CycleNumbers(waitsFor);
    std::map<std::size_t, std::vector<std::size_t>> cycles;
    for (const std::size_t plugin : never) cycles[numbers[plugin]].push_back(plugin);
    std::vector<std::size_t> others;
    for (const std::size_t plugin : never) {
      const std::vector<std::size_t>& cycle = cycles[numbers[plugin]];
      const bool waitsForItself =
          std::count(waitsFor[plugin].begin(), waitsFor[plugin].end(), plugin) > 0;
      if (cycle.size() == 1 && !waitsForItself) {
        others.push_back(plugin);
      } else if (plugin == cycle.front()) {
        Sentence(
            "  " + Names(cycle) +
                (cycle.size() == 1 ? ", which waits for itself" : ", which wait for each other"),
            kRed);
      }
    }
    if (!others.empty()) Sentence("  " + Names(others), kRed);
  }

  const Timeline& m_timeline;
  const ReportStyle& m_style;
  std::string m_text;
};

}  // namespace

const char* WhereText(NotReturned::Where where) {
  switch (where) {
    case NotReturned::Where::kLoading:
      return "while its library was loaded";
    case NotReturned::Where::kInit:
      return "in Init";
    case NotReturned::Where::kCounting:
      return "its Init over but not counted";
    case NotReturned::Where::kUnInit:
      return "in UnInit";
    case NotReturned::Where::kUnmapping:
      return "while its library was unmapped";
  }
  return "";
}

std::string HowItEnded(const Timeline& timeline) {
  const RunState& state = timeline.state;
  if (state.Crash()) return "Crashed: " + Escaped(state.Crash()->text);
  if (state.End()) return "Ended: " + Escaped(state.End()->text);
  if (timeline.run.now > 0) return "It still goes on";
  if (timeline.run.source == RecordedRun::Source::kLog) return "A log does not say how a run ended";
  return "The record has no end: the run still goes on, or its process was killed";
}

std::string ReportText(const Timeline& timeline, const ReportStyle& style) {
  return Writer(timeline, style).Write();
}
