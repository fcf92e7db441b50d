#include "workbench/report/page/Tables.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

#include "workbench/output/Text.h"
#include "workbench/report/Times.h"
#include "workbench/report/page/Bars.h"
#include "workbench/report/page/HtmlText.h"

namespace {

using Span = PluginSpan;

constexpr char kNone[] = "–";
constexpr char kNotKnown[] = "not known";
constexpr std::size_t kOpenSteps = 12;  // of a path whose table is open at first

/// A column behind name, result and bar. page.css knows the columns by their numbers: those from
/// the seventh on are hidden until all times are shown.
struct Column {
  const char* title;
  const char* kind;  // class of its title: "n" a number, "t" a text
  const char* sort;  // name of the order by this column, ascending or not; empty: none
  std::string (*cell)(const PhaseView& view, std::size_t plugin);
};

/// A duration of a plugin that has begun.
std::string Between(const PhaseView& view, const Span& span, std::int64_t from, std::int64_t to) {
  if (!span.HasBegun()) return kNone;
  if (from == kUnknown || to == kUnknown) return kNotKnown;
  return view.Ms(to - from);
}

const Span& SpanOf(const PhaseView& view, std::size_t plugin) {
  return view.phase.spans[plugin];
}

std::string BeginCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  return span.HasBegun() ? view.Since(span.begin) : kNone;
}

std::string TookCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  if (!span.HasBegun() || span.HasEnded()) return Between(view, span, span.begin, span.end);
  return "≥ " + Between(view, span, span.begin, std::max(span.begin, view.phase.end));
}

std::string SlackCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  if (!view.phase.ended) return kNone;  // what ends last is not yet known
  if (span.slack != kUnknown) return view.Ms(span.slack);
  return span.HasBegun() && !view.timeline.run.knowsEdges ? kNotKnown : kNone;
}

std::string OthersCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  return Between(view, span, view.phase.begin, span.ready);
}

std::string WaitedForCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  if (!view.timeline.run.knowsEdges) return kNotKnown;
  if (span.releasedBy) return HtmlID(view.ID(*span.releasedBy));
  constexpr std::size_t mostNames = 3;
  const std::vector<std::string> others = view.StillWaitsFor(plugin);
  if (!span.HasBegun() && !others.empty()) return "still " + HtmlNames(others, mostNames);
  return kNone;
}

std::string LookCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  return Between(view, span, span.ready, span.posted);
}

std::string QueueCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  return Between(view, span, span.posted, span.begin);
}

std::string LoadingCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  return Between(view, span, span.begin, span.loaded);
}

/// As the frame measured it and HUB run shows it.
std::string CodeCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  if (span.milliseconds >= 0) return std::to_string(span.milliseconds);
  const bool ran = span.codeBegin != kUnknown && span.codeEnd != kUnknown;
  return ran ? kNotKnown : kNone;
}

std::string UnmapCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  if (span.codeEnd == kUnknown || !span.HasEnded()) return kNone;
  return view.Ms(span.end - span.codeEnd);
}

std::string ThreadCell(const PhaseView& view, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  if (!span.HasBegun()) return kNone;
  return span.thread == 0 ? kNotKnown : std::to_string(span.thread);
}

std::string ReasonCell(const PhaseView& view, std::size_t plugin) {
  return HtmlText(view.Reason(plugin));
}

std::vector<Column> ColumnsOf(const PhaseView& view) {
  std::vector<Column> columns = {{"Begin", "n", "begin", BeginCell},
                                 {"Took", "n", "duration", TookCell},
                                 {"Slack", "n", "slack", SlackCell},
                                 {"Waited for others", "n", "", OthersCell},
                                 {"Last waited for", "t", "", WaitedForCell},
                                 {"Waited for the look", "n", "", LookCell},
                                 {"In queue", "n", "", QueueCell}};
  if (view.IsStart()) {
    columns.push_back({"Loading", "n", "", LoadingCell});
    columns.push_back({"Init, by the frame", "n", "", CodeCell});
  } else {
    columns.push_back({"UnInit, by the frame", "n", "", CodeCell});
    columns.push_back({"Unmapping", "n", "", UnmapCell});
  }
  columns.push_back({"Thread", "n", "", ThreadCell});
  columns.push_back({"Reason", "t", "", ReasonCell});
  return columns;
}

std::string HeadOf(const PhaseView& view, const std::vector<Column>& columns) {
  std::string html =
      "<thead><tr><th scope=\"col\" class=\"name\" data-sort=\"name\">Plugin</th>"
      "<th scope=\"col\" class=\"result\">Result</th>";
  fmt::format_to(std::back_inserter(html),
                 "<th scope=\"col\" class=\"b\"><span class=\"sr\">Timeline, milliseconds since "
                 "the {} began</span><div>{}</div></th>",
                 view.Word(), AxisSvg(view, view.timeline.plugins.size()));
  for (const Column& column : columns) {
    const std::string sort =
        *column.sort == '\0' ? "" : fmt::format(R"( data-sort="{}")", column.sort);
    fmt::format_to(std::back_inserter(html), R"(<th scope="col" class="{}"{}>{}</th>)", column.kind,
                   sort, column.title);
  }
  return html + "</tr></thead>\n";
}

std::string IndicesText(const std::vector<std::size_t>& indices) {
  std::string text;
  for (const std::size_t index : indices) {
    if (!text.empty()) text += ' ';
    text += std::to_string(index);
  }
  return text;
}

/// The name, whole in a tooltip when the column may be too narrow for it.
std::string NameCell(const PhaseView& view, std::size_t plugin) {
  constexpr std::size_t most = 34;
  const std::string id = HtmlID(view.ID(plugin));
  const bool cut = Columns(ShownID(view.ID(plugin))) > most;
  return fmt::format("<th scope=row{}><bdi>{}</bdi>", cut ? " title=\"" + id + "\"" : "", id);
}

/// Without the end tags and quotation marks that HTML does not need: a page of many plugins is
/// mostly rows.
std::string RowOf(const PhaseView& view, const std::vector<Column>& columns, std::size_t plugin) {
  const Span& span = SpanOf(view, plugin);
  const ResultWords result = WordsOf(view, span);
  std::string html = fmt::format("<tr id={}-{} data-r={} data-w=\"{}\"", view.Word(), plugin,
                                 result.key, IndicesText(view.phase.waitsFor[plugin]));
  if (span.releasedBy) fmt::format_to(std::back_inserter(html), " data-by={}", *span.releasedBy);
  html += view.IsOnPath(plugin) ? " class=path>" : ">";
  fmt::format_to(std::back_inserter(html), "{}<td>{}<td class=b><div>{}</div>",
                 NameCell(view, plugin), result.text, PluginSvg(view, plugin));
  for (const Column& column : columns) html += "<td>" + column.cell(view, plugin);
  return html + "\n";
}

/// The plugins of each thread in the order of their begins; the threads in the order of their
/// first.
std::vector<std::vector<std::size_t>> LanesOf(const PhaseView& view) {
  std::map<std::uint64_t, std::size_t> positions;
  std::vector<std::vector<std::size_t>> lanes;
  for (const std::size_t plugin : view.order) {
    if (!SpanOf(view, plugin).HasBegun()) break;
    const auto [lane, added] = positions.emplace(SpanOf(view, plugin).thread, lanes.size());
    if (added) lanes.emplace_back();
    lanes[lane->second].push_back(plugin);
  }
  return lanes;
}

std::string LaneRow(const PhaseView& view, const std::vector<std::size_t>& lane) {
  std::int64_t busy = 0;
  for (const std::size_t plugin : lane) {
    const Span& span = SpanOf(view, plugin);
    busy += std::max(span.HasEnded() ? span.end : view.phase.end, span.begin) - span.begin;
  }
  const std::uint64_t thread = SpanOf(view, lane.front()).thread;
  return fmt::format(
      "<tr><th scope=row>{}<td class=b><div>{}</div>"
      "<td>{}<td>{}\n",
      thread == 0 ? "not known" : std::to_string(thread), LaneSvg(view, lane), lane.size(),
      view.Ms(busy));
}

/// The cells of the time before a plugin of the path began.
std::string WaitCells(const PhaseView& view, std::int64_t look, std::int64_t idle) {
  if (!view.timeline.run.knowsTasks) return "<td>" + view.Ms(look + idle);
  return "<td>" + view.Ms(look) + "<td>" + view.Ms(idle);
}

std::string PathRow(const PhaseView& view, const PathStep& step) {
  return fmt::format("<tr><th scope=row><a href=\"#{}-{}\"><bdi>{}</bdi></a><td>{}{}<td>{}<td>{}\n",
                     view.Word(), step.plugin, HtmlID(view.ID(step.plugin)),
                     step.releasedBy ? HtmlID(view.ID(*step.releasedBy)) : kNone,
                     WaitCells(view, step.look, step.idle), view.Ms(step.work),
                     ShareText(step.work, view.phase.balance.wall));
}

/// From the end of the path to the end of the phase.
std::string LastPathRow(const PhaseView& view) {
  const PhaseTimeline& phase = view.phase;
  return fmt::format("<tr><th scope=row>until the {}<td>{}{}<td>{}<td>{}\n",
                     phase.ended ? fmt::format("{} ended", view.Word()) : "last event", kNone,
                     WaitCells(view, phase.EndsWithLook() ? phase.lastWait : 0,
                               phase.EndsWithLook() ? 0 : phase.lastWait),
                     kNone, kNone);
}

}  // namespace

std::string PluginTable(const PhaseView& view) {
  const std::vector<Column> columns = ColumnsOf(view);
  std::string html = fmt::format(
      "<div class=\"scroll\"><table class=\"plugins\"><caption class=\"sr\">The plugins of the {}, "
      "times in milliseconds</caption>\n",
      view.Word());
  html += HeadOf(view, columns) + "<tbody>\n";
  for (const std::size_t plugin : view.order) html += RowOf(view, columns, plugin);
  return html + "</tbody></table></div>\n";
}

std::string ThreadTable(const PhaseView& view) {
  if (!view.timeline.run.knowsThreads) {
    return "<p>Which thread ran which plugin is not known: the log does not name threads.</p>\n";
  }
  const std::vector<std::vector<std::size_t>> lanes = LanesOf(view);
  std::string html = fmt::format(
      "<div class=\"scroll\"><table class=\"lanes\"><caption class=\"sr\">The threads of the {}, "
      "times in milliseconds</caption>\n<thead><tr><th scope=\"col\" class=\"name\">Thread</th>"
      "<th scope=\"col\" class=\"b\"><span class=\"sr\">Timeline</span><div>{}</div></th>"
      "<th scope=\"col\" class=\"n\">Plugins</th><th scope=\"col\" class=\"n\">Busy</th></tr>"
      "</thead>\n<tbody>\n",
      view.Word(), AxisSvg(view, lanes.size()));
  for (const std::vector<std::size_t>& lane : lanes) html += LaneRow(view, lane);
  return html + "</tbody></table></div>\n";
}

std::string PathTable(const PhaseView& view) {
  const std::vector<PathStep>& path = view.phase.path;
  if (!view.timeline.run.knowsEdges) {
    return "<p>What waits for what is not known: the log does not name it, so there is neither a "
           "critical path nor slack.</p>\n";
  }
  if (path.empty()) return "<p>No plugin had begun, so there is no critical path.</p>\n";
  const char* waits = view.timeline.run.knowsTasks
                          ? R"(Waited for the look</th><th scope="col" class="n">Idle before it)"
                          : "Waited for a look and a thread";
  std::string html = fmt::format(
      "<details class=\"path\"{}><summary>Critical path: {}</summary>\n<div "
      "class=\"scroll\"><table>"
      "<thead><tr><th scope=\"col\" class=\"name\">Plugin</th>"
      "<th scope=\"col\" class=\"t\">Released by</th><th scope=\"col\" class=\"n\">{}</th>"
      "<th scope=\"col\" class=\"n\">Work</th><th scope=\"col\" class=\"n\">Share</th>"
      "</tr></thead>\n<tbody>\n",
      path.size() > kOpenSteps ? "" : " open", Count(path.size(), "plugin"), waits);
  for (const PathStep& step : path) html += PathRow(view, step);
  return html + LastPathRow(view) + "</tbody></table></div></details>\n";
}
