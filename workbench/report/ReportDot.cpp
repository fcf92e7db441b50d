#include "workbench/report/ReportDot.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <utility>

#include "workbench/output/Text.h"
#include "workbench/report/DotLegend.h"
#include "workbench/report/DotText.h"
#include "workbench/report/StartEdges.h"
#include "workbench/report/Times.h"

namespace {

using Result = PluginSpan::Result;

constexpr std::size_t kMostColumns = 40;  // of an ID in a node; its tooltip has it whole
constexpr std::size_t kMostNames = 10;

/// What a result adds to the times of a start or stop.
const char* ResultText(Result result) {
  switch (result) {
    case Result::kNotBegun:
      return "not begun";
    case Result::kNotReturned:
      return "not returned";
    case Result::kFailed:
      return "failed";
    case Result::kNotLoaded:
      return "not loaded";
    case Result::kRefused:
      return "refused";
    case Result::kNothingToStop:
      return "nothing to stop";
    case Result::kNotKnown:
      return "result not known";
    case Result::kOk:
      return "";
  }
  return "";
}

DotNodeLook LookOf(const PluginSpan& start, const PluginSpan& stop) {
  if (start.result == Result::kFailed || start.result == Result::kNotLoaded) {
    return DotNodeLook::kFailed;
  }
  if (start.result == Result::kNotReturned || stop.result == Result::kNotReturned ||
      stop.result == Result::kRefused) {
    return DotNodeLook::kUnfinished;
  }
  return start.result == Result::kNotBegun ? DotNodeLook::kNotStarted : DotNodeLook::kOk;
}

std::optional<std::size_t> PositionOf(const Timeline& timeline, const std::string& id) {
  for (std::size_t i = 0; i < timeline.plugins.size(); ++i) {
    if (timeline.plugins[i].id == id) return i;
  }
  return std::nullopt;
}

class Writer {
 public:
  Writer(const Timeline& timeline, const DotOptions& options)
      : m_timeline(timeline),
        m_options(options),
        m_dependencies(WithoutRepetitions(timeline.start.waitsFor)),
        m_dependents(Reversed(m_dependencies)),
        m_cycles(CycleNumbers(m_dependencies)),
        m_shown(timeline.plugins.size(), !options.focus) {}

  std::string Write() {
    if (m_options.focus) Focus(*PositionOf(m_timeline, *m_options.focus));
    for (const PathStep& step : m_timeline.start.path) m_critical.insert(step.plugin);
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
      if (m_shown[i]) WriteNode(i);
    }
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
      if (m_shown[i]) WriteEdges(i);
    }
    CountForeign();
    return fmt::format(
        "digraph start {{\n"
        "graph [charset=\"UTF-8\", rankdir=LR, nodesep=0.15, ranksep=0.6, labelloc=t, "
        "labeljust=l, fontname=\"Helvetica\", fontsize=11, tooltip=\" \",\n"
        "label={}]\n"
        "node [shape=box, style=\"rounded,filled\", fontname=\"Helvetica\", fontsize=10, "
        "margin=\"0.1,0.04\"]\n"
        "edge [arrowsize=0.7]\n{}}}\n",
        DotLegend(m_timeline, m_options, m_content), m_body);
  }

 private:
  std::string ID(std::size_t plugin) const { return ShownID(m_timeline.plugins[plugin].id); }

  std::string Ms(std::int64_t nanoseconds) const {
    return MsText(nanoseconds, m_timeline.run.resolution) + " ms";
  }

  void Focus(std::size_t plugin) {
    m_focus = plugin;
    MarkWithin(m_dependencies, plugin, m_options.depth, m_shown);
    MarkWithin(m_dependents, plugin, m_options.depth, m_shown);
  }

  void CountForeign() {
    std::set<std::string> ids;
    for (const PluginHead& plugin : m_timeline.plugins) ids.insert(plugin.id);
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
      if (!m_shown[i]) continue;
      for (const std::string& id : m_timeline.plugins[i].dependsOn) {
        if (ids.count(id) == 0) ++m_content.foreign;
      }
    }
  }

  /// "start 41.0 ms, Init 37 ms: failed".
  std::string SpanText(const char* name, const char* entry, const PhaseTimeline& phase,
                       const PluginSpan& span) const {
    std::string text = name;
    if (span.HasBegun()) {
      const std::int64_t end = span.HasEnded() ? span.end : phase.end;
      text += " " + Ms(std::max<std::int64_t>(end - span.begin, 0));
    }
    if (span.milliseconds >= 0) text += fmt::format(", {} {} ms", entry, span.milliseconds);
    if (span.result != Result::kOk) text += std::string(": ") + ResultText(span.result);
    return text;
  }

  std::string Label(std::size_t plugin) const {
    const PluginSpan& start = m_timeline.start.spans[plugin];
    const PluginSpan& stop = m_timeline.stop.spans[plugin];
    std::string times = SpanText("start", "Init", m_timeline.start, start);
    if (m_timeline.stop.begun) times += "<BR/>" + SpanText("stop", "UnInit", m_timeline.stop, stop);
    return fmt::format(R"(<{}<BR/><FONT POINT-SIZE="9">{}</FONT>>)",
                       DotBold(CutToColumns(ID(plugin), kMostColumns)), times);
  }

  /// When and why the plugin began, a line for each part that is known.
  std::string WaitingText(const char* name, const PhaseTimeline& phase,
                          const PluginSpan& span) const {
    std::string text;
    const auto add = [&](std::int64_t from, std::int64_t to, const std::string& what) {
      if (from != kUnknown && to != kUnknown && to > from) {
        text += fmt::format("\n  {} {}", Ms(to - from), what);
      }
    };
    if (span.HasBegun() && phase.begun) {
      text += fmt::format("\n{}: began {} into the phase", name,
                          Ms(std::max<std::int64_t>(span.begin - phase.begin, 0)));
    }
    const std::string last = span.releasedBy ? ", the last of them " + ID(*span.releasedBy) : "";
    add(phase.begin, span.ready, "waiting for other plugins" + last);
    add(span.ready, span.posted, "waiting for the next look");
    add(span.posted, span.begin, "waiting for a thread");
    if (span.slack != kUnknown) text += "\n  slack " + Ms(span.slack);
    return text;
  }

  std::string Tooltip(std::size_t plugin) const {
    const PluginRun& state = m_timeline.State(plugin);
    std::string text = ID(plugin);
    text += WaitingText("start", m_timeline.start, m_timeline.start.spans[plugin]);
    if (!state.reason.empty()) text += "\n  " + Escaped(state.reason);
    text += WaitingText("stop", m_timeline.stop, m_timeline.stop.spans[plugin]);
    if (!state.stopReason.empty()) text += "\n  " + Escaped(state.stopReason);
    const std::vector<std::size_t>& dependencies = m_dependencies[plugin];
    if (dependencies.empty()) return text;
    std::vector<std::string> ids;
    ids.reserve(dependencies.size());
    for (const std::size_t other : dependencies) ids.push_back(m_timeline.plugins[other].id);
    return text + "\ndepends on " + JoinNames(ids, kMostNames);
  }

  void WriteNode(std::size_t plugin) {
    const DotNodeLook look = LookOf(m_timeline.start.spans[plugin], m_timeline.stop.spans[plugin]);
    ++m_content.plugins;
    m_content.nodes.insert(look);
    m_body +=
        fmt::format("n{} [label={}, tooltip={}, {}{}]\n", plugin, Label(plugin),
                    DotQuoted(Tooltip(plugin)), DotAttributes(look, m_critical.count(plugin) != 0),
                    m_focus == plugin ? ", peripheries=2" : "");
  }

  DotEdgeLook LookOfEdge(std::size_t from, std::size_t to) const {
    if (m_cycles[from] == m_cycles[to]) return DotEdgeLook::kCycle;
    const PluginSpan& span = m_timeline.start.spans[to];
    const PluginSpan& other = m_timeline.start.spans[from];
    const bool hasEnded = other.HasEnded() && other.end <= m_timeline.start.end;
    if (!span.HasBegun() && !hasEnded) return DotEdgeLook::kBlocked;
    if (span.releasedBy != from) return DotEdgeLook::kOther;
    const bool isCritical = m_critical.count(from) != 0 && m_critical.count(to) != 0;
    return isCritical ? DotEdgeLook::kCritical : DotEdgeLook::kReleased;
  }

  /// The edges to `plugin`, and marks for the neighbours that are not in the graph.
  void WriteEdges(std::size_t plugin) {
    for (const std::size_t other : m_dependencies[plugin]) {
      if (!m_shown[other]) continue;
      const DotEdgeLook look = LookOfEdge(other, plugin);
      m_content.edges.insert(look);
      m_body += fmt::format("n{} -> n{} [{}, tooltip={}]\n", other, plugin, DotAttributes(look),
                            DotQuoted(ID(plugin) + " depends on " + ID(other)));
    }
    WriteMark(plugin, m_dependencies[plugin], true);
    WriteMark(plugin, m_dependents[plugin], false);
  }

  void WriteMark(std::size_t plugin, const std::vector<std::size_t>& neighbours, bool before) {
    const auto hidden = std::count_if(neighbours.begin(), neighbours.end(),
                                      [&](std::size_t other) { return !m_shown[other]; });
    if (hidden == 0) return;
    const std::string node = fmt::format("n{}", plugin);
    const std::string mark = fmt::format("{}{}", before ? "before" : "after", plugin);
    m_body += fmt::format(
        "{} [shape=plain, style=\"\", fontcolor=\"#707070\", label=\"\xE2\x80\xA6 {} more\", "
        "tooltip={}]\n{} -> {} [color=\"#c0c0c0\", arrowhead=none]\n",
        mark, hidden, DotQuoted(HiddenText(neighbours)), before ? mark : node,
        before ? node : mark);
  }

  std::string HiddenText(const std::vector<std::size_t>& neighbours) const {
    std::vector<std::string> ids;
    for (const std::size_t other : neighbours) {
      if (!m_shown[other]) ids.push_back(m_timeline.plugins[other].id);
    }
    return JoinNames(ids, kMostNames);
  }

  const Timeline& m_timeline;
  const DotOptions& m_options;
  const DependencyLists m_dependencies;
  const DependencyLists m_dependents;
  const std::vector<std::size_t> m_cycles;
  std::vector<bool> m_shown;
  std::optional<std::size_t> m_focus;
  std::set<std::size_t> m_critical;
  DotContent m_content;
  std::string m_body;
};

}  // namespace

std::string FocusFault(const Timeline& timeline, const std::string& id) {
  if (PositionOf(timeline, id)) return std::string();
  std::vector<std::string> ids;
  ids.reserve(timeline.plugins.size());
  for (const PluginHead& plugin : timeline.plugins) ids.push_back(plugin.id);
  const std::string run = Escaped(timeline.run.name);
  if (ids.empty()) return fmt::format("{} has no plugins, so no \"{}\"", run, Escaped(id));
  return fmt::format("{} has no plugin \"{}\"; its plugins are {}", run, Escaped(id),
                     JoinNames(ids, kMostNames));
}

std::string ReportDot(const Timeline& timeline, const DotOptions& options) {
  if (options.focus) {
    const std::string fault = FocusFault(timeline, *options.focus);
    if (!fault.empty()) throw std::invalid_argument(fault);
  }
  return Writer(timeline, options).Write();
}
