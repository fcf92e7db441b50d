#include "workbench/report/page/Bars.h"

#include <fmt/format.h>

#include <cstdint>
#include <iterator>
#include <optional>
#include <vector>

#include "workbench/report/page/HtmlText.h"

namespace {

using Span = PluginSpan;

/// A part of a plugin's bar.
struct Segment {
  const char* kind;  // its class in page.css
  std::int64_t from;
  std::int64_t to;
};

/// Where the bar of a plugin that has begun ends.
std::int64_t EndOf(const PhaseView& view, const Span& span) {
  return span.HasEnded() ? span.end : view.phase.end;
}

/// Waiting before the plugin's work; what is not known is not drawn.
void AddWaiting(const PhaseView& view, const Span& span, std::vector<Segment>& segments) {
  const std::int64_t begin = span.HasBegun() ? span.begin : view.phase.end;
  if (!view.timeline.run.knowsEdges) return;
  if (span.ready == kUnknown) {
    if (!span.HasBegun()) segments.push_back({"o", view.phase.begin, begin});
    return;
  }
  segments.push_back({"o", view.phase.begin, span.ready});
  if (span.posted == kUnknown) {
    const bool looks = view.timeline.run.knowsTasks && !span.HasBegun();
    segments.push_back({looks ? "l" : "u", span.ready, begin});
    return;
  }
  segments.push_back({"l", span.ready, span.posted});
  segments.push_back({"q", span.posted, begin});
}

/// The plugin's work. Times that are missing in it leave its other parts as long as they are known.
void AddWork(const PhaseView& view, const Span& span, std::vector<Segment>& segments) {
  const std::int64_t end = EndOf(view, span);
  std::int64_t code = span.codeBegin != kUnknown ? span.codeBegin : span.loaded;
  if (!view.IsStart()) code = span.begin;
  if (code == kUnknown || span.result == Span::Result::kNotLoaded) code = end;
  const std::int64_t codeEnd = span.codeEnd != kUnknown ? span.codeEnd : end;
  segments.push_back({"d", span.begin, code});
  segments.push_back({"r", code, codeEnd});
  segments.push_back({"z", codeEnd, end});
}

std::vector<Segment> SegmentsOf(const PhaseView& view, const Span& span) {
  std::vector<Segment> segments;
  AddWaiting(view, span, segments);
  if (span.HasBegun()) AddWork(view, span, segments);
  return segments;
}

/// The edge from the end of the plugin that released this one: a line between their rows.
std::string PathEdge(const PhaseView& view, std::size_t plugin) {
  const std::optional<std::size_t> by = view.phase.spans[plugin].releasedBy;
  if (!view.IsOnPath(plugin) || !by) return std::string();
  const std::string x = view.Place(EndOf(view, view.phase.spans[*by]));
  const auto rows =
      static_cast<std::int64_t>(view.places[*by]) - static_cast<std::int64_t>(view.places[plugin]);
  return fmt::format(R"(<line class="e" x1="{}" x2="{}" y1="{}" y2="{}"/>)", x, x,
                     rows * kRowHeight + kRowHeight / 2, kRowHeight / 2);
}

/// The distance between two labels of the axis, in nanoseconds: at most ten of them.
std::int64_t TickOf(std::int64_t wall) {
  std::int64_t tick = 1'000;
  while (true) {
    for (const std::int64_t factor : {1, 2, 5}) {
      if (wall / (tick * factor) < 10) return tick * factor;
    }
    tick *= 10;
  }
}

/// Labels at the ends of the axis are put within it.
const char* EdgeClass(std::int64_t at, std::int64_t wall) {
  if (at == 0) return " class=\"first\"";
  return at > wall - wall / 50 ? " class=\"last\"" : "";
}

}  // namespace

std::string AxisSvg(const PhaseView& view, std::size_t rows) {
  const std::int64_t wall = view.phase.balance.wall;
  const std::int64_t tick = TickOf(wall);
  std::string svg = R"(<svg class="axis" aria-hidden="true">)";
  for (std::int64_t at = 0; at <= wall; at += tick) {
    const std::string x = view.Place(view.phase.begin + at);
    fmt::format_to(std::back_inserter(svg),
                   "<line x1=\"{}\" x2=\"{}\" y1=\"18\" y2=\"{}\"/>"
                   "<text{} x=\"{}\" y=\"13\">{:g}</text>",
                   x, x, kRowHeight * (rows + 1), EdgeClass(at, wall), x,
                   static_cast<double>(at) / 1e6);
  }
  return svg + "</svg>";
}

std::string PluginSvg(const PhaseView& view, std::size_t plugin) {
  std::string svg = "<svg aria-hidden=true>";
  for (const Segment& segment : SegmentsOf(view, view.phase.spans[plugin])) {
    if (segment.to <= segment.from) continue;
    fmt::format_to(std::back_inserter(svg), "<rect class={} x={} width={} />", segment.kind,
                   view.Place(segment.from), view.Width(segment.from, segment.to));
  }
  return svg + PathEdge(view, plugin) + "</svg>";
}

std::string LaneSvg(const PhaseView& view, const std::vector<std::size_t>& plugins) {
  std::string svg = "<svg aria-hidden=true>";
  for (const std::size_t plugin : plugins) {
    const Span& span = view.phase.spans[plugin];
    const std::int64_t end = EndOf(view, span);
    const ResultWords result = WordsOf(view, span);
    const std::string id = HtmlID(view.ID(plugin));
    fmt::format_to(std::back_inserter(svg),
                   "<svg x={} width={} data-p={} data-r={}{}><title>{}: {}, {} ms</title>"
                   "<rect class=r /><text>{}</text></svg>",
                   view.Place(span.begin), view.Width(span.begin, end), plugin, result.key,
                   view.IsOnPath(plugin) ? " class=path" : "", id, result.text,
                   view.Ms(end - span.begin), id);
  }
  return svg + "</svg>";
}

std::string BalanceSvg(const PhaseView& view) {
  const TimeBalance& balance = view.phase.balance;
  std::vector<Segment> parts = {{"path", 0, balance.path}};
  if (view.timeline.run.knowsTasks) {
    parts.insert(parts.end(), {{"l", 0, balance.look}, {"idle", 0, balance.idle}});
  } else {
    parts.push_back({"u", 0, balance.look + balance.idle});
  }
  std::int64_t at = view.phase.begin;
  std::string svg = R"(<svg class="balance" aria-hidden="true">)";
  for (const Segment& part : parts) {
    fmt::format_to(std::back_inserter(svg), R"(<rect class="{}" x="{}" width="{}"/>)", part.kind,
                   view.Place(at), view.Width(at, at + part.to));
    at += part.to;
  }
  return svg + "</svg>";
}

std::string LegendHtml(const PhaseView& view) {
  struct Entry {
    const char* kind;
    const char* result;
    const char* text;
  };
  std::vector<Entry> entries;
  if (view.timeline.run.knowsEdges) {
    entries = {{"o", "", "waits for other plugins"}};
    if (view.timeline.run.knowsTasks) {
      entries.push_back({"l", "", "waits for the frame's next look"});
      entries.push_back({"q", "", "waits for a thread"});
    } else {
      entries.push_back({"u", "", "waits for the next look or a thread"});
    }
  }
  if (view.IsStart()) {
    entries.insert(entries.end(), {{"d", "ok", "loads its library"},
                                   {"r", "ok", "Init, started"},
                                   {"r", "failed", "Init failed, or not loaded"}});
  } else {
    entries.insert(entries.end(), {{"r", "ok", "UnInit, stopped"},
                                   {"z", "ok", "library is unmapped"},
                                   {"r", "refused", "stop refused"}});
  }
  entries.push_back({"r", "not-returned", "not returned"});
  std::string html = "<ul class=\"legend\">";
  for (const Entry& entry : entries) {
    fmt::format_to(std::back_inserter(html),
                   "<li data-r=\"{}\"><svg aria-hidden=\"true\"><rect class=\"{}\" width=\"100%\"/>"
                   "</svg>{}</li>",
                   entry.result, entry.kind, entry.text);
  }
  if (view.timeline.run.knowsEdges) {
    html += "<li><span class=\"mark\">◆</span> critical path</li>";
  }
  return html + "</ul>";
}

std::string DefinitionsSvg() {
  return R"html(<svg class="definitions" aria-hidden="true"><defs>
<pattern id="look-pattern" width="6" height="6" patternUnits="userSpaceOnUse" patternTransform="rotate(45)"><rect class="look-a" width="6" height="6"/><rect class="look-b" width="2" height="6"/></pattern>
<pattern id="failed-pattern" width="8" height="8" patternUnits="userSpaceOnUse"><rect class="failed-a" width="8" height="8"/><path class="failed-b" d="M0 0L8 8M8 0L0 8"/></pattern>
<pattern id="open-pattern" width="10" height="10" patternUnits="userSpaceOnUse" patternTransform="rotate(45)"><rect class="open-a" width="10" height="10"/><rect class="open-b" width="5" height="10"/></pattern>
<marker id="arrow" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="7" markerHeight="7" markerUnits="userSpaceOnUse" orient="auto"><path class="arrow" d="M0 0L8 4L0 8z"/></marker>
</defs></svg>
)html";
}
