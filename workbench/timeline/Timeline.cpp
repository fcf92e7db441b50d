#include "workbench/timeline/Timeline.h"

#include <algorithm>
#include <map>
#include <utility>

#include "workbench/timeline/CriticalPath.h"

namespace {

using Kind = RunEvent::Kind;
using Result = RunEvent::Result;
using Span = PluginSpan;

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kDay = 86'400'000;  // milliseconds

/// The frame starts every plugin but these; a plugin of which only events are known is one.
bool IsInTimeline(const PluginHead& plugin) {
  return plugin.kind != "driver" && plugin.kind != "executable";
}

Span::Result ResultOf(const RunEvent& counted) {
  const bool start = counted.phase == RunPhase::kStart;
  switch (counted.result) {
    case Result::kFailed:
      return Span::Result::kFailed;
    case Result::kNotLoaded:
      return start ? Span::Result::kNotLoaded : Span::Result::kNothingToStop;
    case Result::kRefused:
      return Span::Result::kRefused;
    case Result::kNone:
      return Span::Result::kNotKnown;
    default:
      return Span::Result::kOk;
  }
}

/// A task of the pool that has begun and whose plugin is not yet known.
struct Task {
  std::int64_t posted = kUnknown;
  std::int64_t begin = kUnknown;
};

/// Makes the spans of both phases from the events, in their order.
class Layout {
 public:
  explicit Layout(Timeline& timeline) : m_timeline(timeline) {
    const std::size_t plugins = timeline.plugins.size();
    for (std::size_t i = 0; i < plugins; ++i) m_positions.emplace(timeline.plugins[i].id, i);
    for (PhaseTimeline* phase : {&timeline.start, &timeline.stop}) {
      phase->spans.resize(plugins);
      phase->waitsFor.resize(plugins);
    }
    AddEdges();
  }

  void Add(const RunEvent& event) {
    const std::int64_t at =
        std::max<std::int64_t>(event.nanoseconds - m_timeline.run.record.head.nanoseconds, 0);
    m_timeline.last = std::max(m_timeline.last, at);
    switch (event.kind) {
      case Kind::kPhaseBegin:
        if (PhaseTimeline* phase = Phase(event.phase)) {
          phase->begun = true;
          phase->begin = at;
        }
        return;
      case Kind::kPhaseEnd:
        if (PhaseTimeline* phase = Phase(event.phase)) {
          phase->ended = true;
          phase->end = at;
        }
        return;
      case Kind::kPosted:
        m_posted[event.task] = at;
        return;
      case Kind::kTaskBegin:
        m_begun[event.thread] = {Posted(event.task), at};
        return;
      case Kind::kTaskEnd:
        m_begun.erase(event.thread);
        return;
      default:
        AddPluginEvent(event, at);
    }
  }

 private:
  void AddEdges() {
    for (std::size_t i = 0; i < m_timeline.plugins.size(); ++i) {
      for (const std::string& id : m_timeline.plugins[i].dependsOn) {
        const auto other = m_positions.find(id);
        if (other == m_positions.end()) continue;
        m_timeline.start.waitsFor[i].push_back(other->second);
        m_timeline.stop.waitsFor[other->second].push_back(i);
      }
    }
  }

  PhaseTimeline* Phase(const std::string& name) {
    if (name == RunPhase::kStart) return &m_timeline.start;
    return name == RunPhase::kStop ? &m_timeline.stop : nullptr;
  }

  std::int64_t Posted(std::uint64_t task) const {
    const auto posted = m_posted.find(task);
    return posted == m_posted.end() ? kUnknown : posted->second;
  }

  void AddPluginEvent(const RunEvent& event, std::int64_t at) {
    const auto position = m_positions.find(event.plugin);
    if (position == m_positions.end()) return;
    Span& start = m_timeline.start.spans[position->second];
    Span& stop = m_timeline.stop.spans[position->second];
    switch (event.kind) {
      case Kind::kReady: {
        PhaseTimeline* phase = Phase(event.phase);
        if (phase == nullptr) return;
        Span& span = phase->spans[position->second];
        span.ready = at;
        const auto last = m_positions.find(event.text);
        if (last != m_positions.end() && !event.text.empty()) span.releasedBy = last->second;
        return;
      }
      case Kind::kLoadBegin:
        return Begin(start, event, at);
      case Kind::kLoadEnd:
        start.loaded = at;
        return;
      case Kind::kInitBegin:
        Begin(start, event, at);
        start.codeBegin = at;
        return;
      case Kind::kInitEnd:
        BeginBefore(start, event, at);
        start.codeEnd = at;
        start.milliseconds = event.milliseconds;
        return;
      case Kind::kUnInitBegin:
        Begin(stop, event, at);
        stop.codeBegin = at;
        return;
      case Kind::kUnInitEnd:
        BeginBefore(stop, event, at);
        stop.codeEnd = at;
        stop.milliseconds = event.milliseconds;
        return;
      case Kind::kCounted:
        if (event.phase == RunPhase::kStart) return End(start, event, at);
        if (event.phase == RunPhase::kStop) return End(stop, event, at);
        return;
      default:
        return;
    }
  }

  /// The first event of a plugin's work: the task that the thread has begun is the plugin's.
  void Begin(Span& span, const RunEvent& event, std::int64_t at) {
    if (span.HasBegun()) return;
    const auto task = m_begun.find(event.thread);
    const bool knowsTask = task != m_begun.end();
    span.begin = knowsTask ? task->second.begin : at;
    span.posted = knowsTask ? task->second.posted : kUnknown;
    span.thread = m_timeline.run.knowsThreads ? event.thread : 0;
    span.result = Span::Result::kNotReturned;
    if (knowsTask) m_begun.erase(task);
  }

  /// The end of an entry whose begin a cut log does not have: the frame says how long it took.
  void BeginBefore(Span& span, const RunEvent& event, std::int64_t at) {
    if (span.HasBegun() || event.milliseconds <= 0) return;
    Begin(span, event,
          std::max<std::int64_t>(at - std::min(event.milliseconds, kDay) * kMillisecond, 0));
  }

  void End(Span& span, const RunEvent& event, std::int64_t at) {
    Begin(span, event, at);
    span.end = at;
    span.endsAs = ++m_ends;
    span.result = ResultOf(event);
  }

  Timeline& m_timeline;
  std::map<std::string, std::size_t> m_positions;
  std::size_t m_ends = 0;
  std::map<std::uint64_t, std::int64_t> m_posted;  // by task
  std::map<std::uint64_t, Task> m_begun;           // by thread
};

/// Moves contradictory times into order, so that no reader of a span meets a negative duration.
void PutInOrder(Span& span) {
  std::int64_t least = 0;
  for (std::int64_t* time :
       {&span.begin, &span.loaded, &span.codeBegin, &span.codeEnd, &span.end}) {
    if (*time == kUnknown) continue;
    *time = std::max(*time, least);
    least = *time;
  }
  if (!span.HasBegun()) return;
  if (span.posted != kUnknown) span.posted = std::min(span.posted, span.begin);
  const std::int64_t most = span.posted == kUnknown ? span.begin : span.posted;
  if (span.ready != kUnknown) span.ready = std::min(span.ready, most);
}

void FinishPhase(PhaseTimeline& phase, const Timeline& timeline) {
  if (!phase.begun) return;
  if (!phase.ended || phase.end < phase.begin) phase.end = std::max(phase.begin, timeline.last);
  for (Span& span : phase.spans) PutInOrder(span);
  FillPath(phase, timeline.run.knowsEdges);
  if (timeline.run.knowsEdges) FillSlack(phase);
}

}  // namespace

bool PhaseTimeline::IsComplete(bool isStart) const {
  return begun && ended && std::all_of(spans.begin(), spans.end(), [&](const PluginSpan& span) {
           if (!span.HasEnded()) return !span.HasBegun() && !isStart;
           return span.end <= end;
         });
}

bool PhaseTimeline::EndsWithLook() const {
  return ended && std::all_of(spans.begin(), spans.end(),
                              [](const PluginSpan& span) { return span.HasBegun(); });
}

const PluginRun& Timeline::State(std::size_t plugin) const {
  return *state.Find(plugins[plugin].id);
}

Timeline MakeTimeline(RecordedRun run) {
  Timeline timeline;
  timeline.run = std::move(run);
  for (const PluginHead& plugin : timeline.run.record.plugins) timeline.state.AddPlugin(plugin);
  for (const RunEvent& event : timeline.run.record.events) timeline.state.Apply(event);
  for (const PluginRun& plugin : timeline.state.Plugins()) {
    if (IsInTimeline(plugin.head)) timeline.plugins.push_back(plugin.head);
  }
  timeline.last =
      std::max<std::int64_t>(timeline.run.now - timeline.run.record.head.nanoseconds, 0);
  Layout layout(timeline);
  for (const RunEvent& event : timeline.run.record.events) layout.Add(event);
  FinishPhase(timeline.start, timeline);
  FinishPhase(timeline.stop, timeline);
  return timeline;
}
