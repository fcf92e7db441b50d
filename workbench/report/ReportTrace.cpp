#include "workbench/report/ReportTrace.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "workbench/output/Text.h"
#include "workbench/report/ResultName.h"
#include "workbench/report/TraceEvents.h"

namespace {

using Json = nlohmann::ordered_json;
using Result = PluginSpan::Result;

constexpr std::size_t kMostNames = 3;
constexpr char kPhases[] = "phases";
constexpr char kWaiting[] = "waiting";
constexpr char kUnfinished[] = "it had not ended at the last event of the run";

// The colours that chrome://tracing knows by name.
constexpr char kCriticalColor[] = "bad";     // orange
constexpr char kFailedColor[] = "terrible";  // red

constexpr char kLook[] = "waits for the next look";
constexpr char kIdle[] = "idle";

double Ms(std::int64_t nanoseconds) {
  return static_cast<double>(nanoseconds) / 1e6;
}

bool HasFailed(Result result) {
  return result == Result::kFailed || result == Result::kNotLoaded || result == Result::kRefused ||
         result == Result::kNotReturned;
}

TraceSlice Slice(std::int64_t begin, std::int64_t end, const std::string& name,
                 const std::string& category, Json args) {
  TraceSlice slice;
  slice.begin = begin;
  slice.end = end;
  slice.event = {{"name", name}, {"cat", category}};
  if (!args.empty()) slice.event["args"] = std::move(args);
  return slice;
}

/// Writes the slices of one phase, and the waiting before them.
class PhaseTrace {
 public:
  PhaseTrace(const Timeline& timeline, const PhaseTimeline& phase, TraceEvents& events)
      : m_timeline(timeline),
        m_phase(phase),
        m_isStart(&phase == &timeline.start),
        m_name(m_isStart ? RunPhase::kStart : RunPhase::kStop),
        m_critical(phase.spans.size()),
        m_slices(phase.spans.size()),
        m_events(events) {}

  /// The critical path on a track of its own. From the last to the first step: the parts of a phase
  /// have no gaps, and its end is known.
  void WritePath() {
    const std::string track = "critical path of the " + m_name;
    std::int64_t cursor = m_phase.end;
    const auto add = [&](std::int64_t taken, const std::string& name, Json args) {
      const std::int64_t begin = cursor - taken;
      if (taken > 0)
        m_events.AddSlice(track, Slice(begin, cursor, name, "critical", std::move(args)));
      cursor = begin;
    };
    const Json none = Json::object();
    if (!m_phase.path.empty()) add(m_phase.lastWait, m_phase.EndsWithLook() ? kLook : kIdle, none);
    for (auto step = m_phase.path.rbegin(); step != m_phase.path.rend(); ++step) {
      m_critical[step->plugin] = true;
      add(step->work, ID(step->plugin), Args(step->plugin));
      add(step->idle, kIdle, none);
      add(step->look, kLook, none);
    }
  }

  /// After WritePath.
  void WritePlugins() {
    const std::size_t count = m_slices.size();
    for (std::size_t i = 0; i < count; ++i) MakeSlice(i);
    for (std::size_t i = 0; i < count; ++i) MakeArrow(i);
    for (std::size_t i = 0; i < count && m_phase.begun; ++i) WriteWaiting(i);
    for (const std::size_t plugin : ByBegin()) {
      m_events.AddSlice(Track(plugin), std::move(m_slices[plugin]));
    }
  }

 private:
  std::string ID(std::size_t plugin) const { return ShownID(m_timeline.plugins[plugin].id); }

  std::uint64_t Number(std::size_t plugin) const { return 2 * plugin + (m_isStart ? 1 : 2); }

  std::string Track(std::size_t plugin) const {
    const std::uint64_t thread = m_phase.spans[plugin].thread;
    return m_timeline.run.knowsThreads ? "thread " + std::to_string(thread)
                                       : "plugin " + ID(plugin);
  }

  /// The plugins that have begun, in the order of their begins.
  std::vector<std::size_t> ByBegin() const {
    std::vector<std::size_t> plugins;
    for (std::size_t i = 0; i < m_slices.size(); ++i) {
      if (m_phase.spans[i].HasBegun()) plugins.push_back(i);
    }
    std::stable_sort(plugins.begin(), plugins.end(), [&](std::size_t a, std::size_t b) {
      return m_phase.spans[a].begin < m_phase.spans[b].begin;
    });
    return plugins;
  }

  Json Args(std::size_t plugin) const {
    const PluginSpan& span = m_phase.spans[plugin];
    const PluginRun& state = m_timeline.State(plugin);
    const std::string& reason = m_isStart ? state.reason : state.stopReason;
    Json args = {{"plugin", m_timeline.plugins[plugin].id},
                 {"phase", m_name},
                 {"result", ResultName(span.result)}};
    if (!reason.empty()) args["reason"] = reason;
    if (span.milliseconds >= 0) args["ms"] = span.milliseconds;
    if (span.slack != kUnknown) args["slackMs"] = Ms(span.slack);
    if (m_critical[plugin]) args["critical"] = true;
    if (span.releasedBy) args["releasedBy"] = m_timeline.plugins[*span.releasedBy].id;
    if (!span.HasEnded()) args["unfinished"] = kUnfinished;
    return args;
  }

  void MakeSlice(std::size_t plugin) {
    const PluginSpan& span = m_phase.spans[plugin];
    if (!span.HasBegun()) return;
    const std::int64_t end = std::max(span.begin, span.HasEnded() ? span.end : m_timeline.last);
    const std::string category = m_name + (m_critical[plugin] ? ",critical" : "");
    TraceSlice& slice = m_slices[plugin];
    slice = Slice(span.begin, end, ID(plugin), category, Args(plugin));
    if (m_critical[plugin]) slice.event["cname"] = kCriticalColor;
    if (HasFailed(span.result)) slice.event["cname"] = kFailedColor;
    const bool knowsCode = span.codeBegin != kUnknown;
    if (m_isStart && (span.loaded != kUnknown || !knowsCode)) {
      AddPart(slice, "load", span.begin, span.loaded, span.HasEnded());
    }
    if (!knowsCode) return;
    AddPart(slice, m_isStart ? "Init" : "UnInit", span.codeBegin, span.codeEnd, span.HasEnded());
    if (!m_isStart && span.codeEnd != kUnknown && span.result != Result::kRefused) {
      AddPart(slice, "unmap", span.codeEnd, span.end, span.HasEnded());
    }
  }

  /// Adds a part of a plugin's work, which lies between its last part and its end.
  void AddPart(TraceSlice& slice, const char* name, std::int64_t begin, std::int64_t end,
               bool hasEnded) const {
    const std::int64_t least = slice.inside.empty() ? slice.begin : slice.inside.back().end;
    const std::int64_t from = std::clamp(begin, least, slice.end);
    const std::int64_t to = end == kUnknown ? slice.end : std::clamp(end, from, slice.end);
    Json args = Json::object();
    if (end == kUnknown && !hasEnded) args["unfinished"] = kUnfinished;
    slice.inside.push_back(Slice(from, to, name, m_name, std::move(args)));
  }

  /// The arrow from the plugin that released this one. It begins before it ends: of events at the
  /// same time a reader may meet the end first. Where times leave no room there is no arrow.
  void MakeArrow(std::size_t plugin) {
    const PluginSpan& span = m_phase.spans[plugin];
    if (!span.HasBegun() || !span.releasedBy) return;
    TraceSlice& from = m_slices[*span.releasedBy];
    const std::int64_t at = std::min(from.end, span.begin) - 1;
    if (!m_phase.spans[*span.releasedBy].HasBegun() || at < from.begin) return;
    from.arrowsOut.push_back({Number(plugin), at});
    m_slices[plugin].arrowsIn.push_back(Number(plugin));
  }

  std::string WaitsForText(std::size_t plugin) const {
    const PluginSpan& span = m_phase.spans[plugin];
    if (span.releasedBy) return "waits for " + ID(*span.releasedBy);
    std::vector<std::string> ids;
    for (const std::size_t other : m_phase.waitsFor[plugin]) {
      if (!m_phase.spans[other].HasEnded()) ids.push_back(m_timeline.plugins[other].id);
    }
    if (ids.empty()) return "waits, for what is not known";
    return "waits for " + JoinNames(ids, kMostNames);
  }

  void WriteWaiting(std::size_t plugin) {
    const PluginSpan& span = m_phase.spans[plugin];
    const std::int64_t end = span.HasBegun() ? span.begin : m_phase.end;
    if (end <= m_phase.begin) return;
    TraceSlice waiting = Slice(m_phase.begin, end, ID(plugin), kWaiting, Args(plugin));
    for (const std::size_t other : m_phase.waitsFor[plugin]) {
      waiting.event["args"]["waitsFor"].push_back(m_timeline.plugins[other].id);
    }
    AddWaitingParts(waiting, span, WaitsForText(plugin));
    m_events.AddWaiting(Number(plugin), std::move(waiting));
  }

  static void AddWaitingParts(TraceSlice& waiting, const PluginSpan& span,
                              const std::string& forPlugins) {
    std::int64_t cursor = waiting.begin;
    const auto add = [&](std::int64_t until, const std::string& name) {
      const std::int64_t end = std::clamp(until, cursor, waiting.end);
      if (end > cursor)
        waiting.inside.push_back(Slice(cursor, end, name, kWaiting, Json::object()));
      cursor = end;
    };
    const bool isReady = span.ready != kUnknown;
    const bool isPosted = span.posted != kUnknown;
    if (isReady) add(span.ready, forPlugins);
    if (isPosted) add(span.posted, isReady ? kLook : forPlugins);
    const char* untilBegin =
        isPosted ? "waits for a thread" : "waits for the next look and a thread";
    add(waiting.end, isReady || isPosted ? untilBegin : forPlugins);
  }

  const Timeline& m_timeline;
  const PhaseTimeline& m_phase;
  const bool m_isStart;
  const std::string m_name;
  std::vector<bool> m_critical;      // by plugin
  std::vector<TraceSlice> m_slices;  // by plugin
  TraceEvents& m_events;
};

/// The phases within `from`, which are in order of their begin, put into the phases around them.
/// Those that overlap others without being inside them stay beside them.
std::vector<TraceSlice> Nested(std::vector<TraceSlice> phases) {
  std::vector<TraceSlice> outer;
  for (TraceSlice& phase : phases) {
    std::vector<TraceSlice>* list = &outer;
    while (!list->empty() && list->back().begin <= phase.begin && phase.end <= list->back().end) {
      list = &list->back().inside;
    }
    const bool overlaps = !list->empty() && phase.begin < list->back().end;
    (overlaps ? outer : *list).push_back(std::move(phase));
  }
  return outer;
}

void WritePhases(const Timeline& timeline, TraceEvents& events) {
  constexpr std::array<const char*, 7> names = {
      RunPhase::kFrameInit, RunPhase::kPlatformStart, RunPhase::kStart,      RunPhase::kFrameStop,
      RunPhase::kStop,      RunPhase::kPlatformStop,  RunPhase::kFrameUnInit};
  std::vector<TraceSlice> phases;
  const std::int64_t zero = timeline.run.record.head.nanoseconds;
  for (const char* name : names) {
    const RunState::Phase* phase = timeline.state.FindPhase(name);
    if (phase == nullptr) continue;
    const std::int64_t begin = std::max<std::int64_t>(phase->beginNs - zero, 0);
    const bool hasEnded = phase->endNs >= phase->beginNs;
    const std::int64_t end = std::max(begin, hasEnded ? phase->endNs - zero : timeline.last);
    Json args = Json::object();
    if (phase->milliseconds >= 0) args["ms"] = phase->milliseconds;
    if (!hasEnded) args["unfinished"] = kUnfinished;
    phases.push_back(Slice(begin, end, name, "phase", std::move(args)));
  }
  std::stable_sort(phases.begin(), phases.end(), [](const TraceSlice& a, const TraceSlice& b) {
    return a.begin != b.begin ? a.begin < b.begin : a.end > b.end;
  });
  for (TraceSlice& phase : Nested(std::move(phases))) events.AddSlice(kPhases, std::move(phase));
}

std::string InstantName(const RunEvent& event) {
  switch (event.kind) {
    case RunEvent::Kind::kUp:
      return "up";
    case RunEvent::Kind::kStopRequest:
      return "stop request";
    case RunEvent::Kind::kFinding:
      return std::string("finding: ") + Word(event.severity);
    case RunEvent::Kind::kCrash:
      return "crash";
    case RunEvent::Kind::kEnd:
      return "end";
    default:
      return std::string();
  }
}

void WriteInstants(const Timeline& timeline, TraceEvents& events) {
  for (const RunEvent& event : timeline.run.record.events) {
    const std::string name = InstantName(event);
    if (name.empty()) continue;
    Json args = Json::object();
    if (!event.text.empty()) args["text"] = event.text;
    if (!event.plugin.empty()) args["plugin"] = event.plugin;
    if (!event.phase.empty()) args["phase"] = event.phase;
    if (!event.status.empty()) args["status"] = event.status;
    if (event.milliseconds >= 0) args["ms"] = event.milliseconds;
    Json json = {{"name", name}, {"cat", "event"}, {"args", std::move(args)}};
    if (event.kind == RunEvent::Kind::kCrash) json["cname"] = kFailedColor;
    const std::int64_t at = event.nanoseconds - timeline.run.record.head.nanoseconds;
    events.AddInstant(std::max<std::int64_t>(at, 0), std::move(json));
  }
}

/// What is known of the run itself, and what is not.
Json OtherData(const RecordedRun& run) {
  const RunHead& head = run.record.head;
  Json data = Json::object();
  const auto add = [&](const char* name, const std::string& value) {
    if (!value.empty()) data[name] = value;
  };
  add("file", run.name);
  add("run", head.run);
  add("product", head.product);
  add("productVersion", head.productVersion);
  add("path", head.path);
  add("time", head.time);
  add("zone", head.zone);
  add("host", head.host);
  add("hubVersion", head.hubVersion);
  add("frameVersion", head.frameVersion);
  add("platformVersion", head.platformVersion);
  if (head.pid > 0) data["pid"] = head.pid;
  if (head.cores > 0) data["cores"] = head.cores;
  if (run.resolution > 1) data["resolutionMs"] = Ms(run.resolution);
  if (!run.knowsThreads) add("threads", "not known: each plugin has a track of its own");
  if (!run.knowsTasks) add("tasks", "not known: how long each plugin waited for a thread");
  if (!run.knowsEdges) add("dependencies", "not known: which plugins waited for which");
  if (run.record.unreadableLines > 0) data["unreadableLines"] = run.record.unreadableLines;
  return data;
}

}  // namespace

std::string ReportTrace(const Timeline& timeline) {
  TraceEvents events;
  WritePhases(timeline, events);
  PhaseTrace start(timeline, timeline.start, events);
  PhaseTrace stop(timeline, timeline.stop, events);
  start.WritePath();
  stop.WritePath();
  start.WritePlugins();
  stop.WritePlugins();
  WriteInstants(timeline, events);
  const Json data = OtherData(timeline.run);
  return "{\"displayTimeUnit\": \"ms\",\n\"otherData\": " +
         data.dump(-1, ' ', false, Json::error_handler_t::replace) + ",\n\"traceEvents\": [\n" +
         events.Text() + "\n]}\n";
}
