#include "workbench/report/DotLegend.h"

#include <fmt/format.h>

#include <vector>

#include "workbench/output/Text.h"
#include "workbench/report/DotText.h"
#include "workbench/report/Times.h"

namespace {

constexpr char kCriticalColor[] = "#1a56db";

/// How a plugin is drawn and what that means.
struct NodeStyle {
  const char* fill;
  const char* border;
  bool isDashed;
  const char* meaning;
};

NodeStyle StyleOf(DotNodeLook look) {
  switch (look) {
    case DotNodeLook::kOk:
      return {"#eef3ee", "#5f6f64", false, "started"};
    case DotNodeLook::kFailed:
      return {"#f6cfca", "#5f6f64", false, "start failed"};
    case DotNodeLook::kUnfinished:
      return {"#fbe3a8", "#5f6f64", false, "not returned, or refused to stop"};
    case DotNodeLook::kNotStarted:
      return {"#ffffff", "#8a8a8a", true, "not started"};
  }
  return {};
}

/// How an edge is drawn and what that means.
struct EdgeStyle {
  const char* color;
  const char* width;
  bool isDashed;
  const char* meaning;
};

EdgeStyle StyleOf(DotEdgeLook look) {
  switch (look) {
    case DotEdgeLook::kCritical:
      return {kCriticalColor, "2.5", false, "critical path: what the end of the start waited for"};
    case DotEdgeLook::kReleased:
      return {"#555555", "1", false, "the dependency that it waited for last, which released it"};
    case DotEdgeLook::kOther:
      return {"#a0a0a0", "1", true, "another dependency"};
    case DotEdgeLook::kBlocked:
      return {"#c26a00", "1.5", true,
              "a dependency that had not ended when the start or the run did"};
    case DotEdgeLook::kCycle:
      return {"#d00000", "2", false, "part of a cycle: none of its plugins ever starts"};
  }
  return {};
}

std::string Row(const std::string& html) {
  return R"(<TR><TD ALIGN="LEFT">)" + html + "</TD></TR>\n";
}

/// Boxes that look like the nodes, side by side.
std::string NodeRow(const std::set<DotNodeLook>& looks) {
  if (looks.empty()) return std::string();
  std::string cells;
  for (const DotNodeLook look : looks) {
    const NodeStyle style = StyleOf(look);
    cells += fmt::format(R"(<TD BORDER="1" COLOR="{}" BGCOLOR="{}"{}>{}</TD>)", style.border,
                         style.fill, style.isDashed ? R"( STYLE="DASHED")" : "", style.meaning);
  }
  return Row(R"(<TABLE BORDER="0" CELLSPACING="4" CELLPADDING="2"><TR>)" + cells + "</TR></TABLE>");
}

std::string EdgeRow(DotEdgeLook look) {
  const EdgeStyle style = StyleOf(look);
  const char* line = style.isDashed ? "- - -&gt;" : "&#8212;&#8212;&gt;";
  return Row(
      fmt::format(R"(<FONT COLOR="{}"><B>{}</B></FONT>  {})", style.color, line, style.meaning));
}

std::string PhaseText(const char* name, const PhaseTimeline& phase, std::int64_t resolution) {
  const TimeBalance& balance = phase.balance;
  std::string text = fmt::format("{}: {} ms", name, MsText(balance.wall, resolution));
  if (!phase.path.empty()) {
    const std::vector<std::string> parts =
        MsTexts({balance.path, balance.look, balance.idle}, resolution);
    text += fmt::format(" = critical path {} + waiting for the next look {} + idle {}", parts[0],
                        parts[1], parts[2]);
  }
  text += fmt::format("; all work {} ms", MsText(balance.work, resolution));
  if (!phase.ended) text += "; it has not ended";
  return text;
}

std::string Title(const Timeline& timeline) {
  const RunHead& head = timeline.run.record.head;
  std::string name = head.product.empty() ? timeline.run.name : head.product;
  if (!head.productVersion.empty()) name += " " + head.productVersion;
  if (!head.time.empty()) name += ", run of " + head.time;
  return DotBold(Escaped(name.empty() ? "run" : name));
}

std::string Extent(const Timeline& timeline, const DotOptions& options, std::size_t plugins) {
  const char* arrows = "an arrow goes from a plugin to those that wait for it";
  const std::size_t all = timeline.plugins.size();
  if (!options.focus) return fmt::format("{}; {}", Count(all, "plugin"), arrows);
  const std::string depth =
      options.depth == 1 ? "one dependency" : fmt::format("{} dependencies", options.depth);
  return fmt::format("{} of {}: those within {} of {}; {}", plugins, Count(all, "plugin"), depth,
                     DotBold(ShownID(*options.focus)), arrows);
}

}  // namespace

std::string DotAttributes(DotNodeLook look, bool isCritical) {
  const NodeStyle style = StyleOf(look);
  return fmt::format(R"(fillcolor="{}", color="{}"{}{})", style.fill,
                     isCritical ? kCriticalColor : style.border,
                     style.isDashed ? R"(, style="rounded,filled,dashed")" : "",
                     isCritical ? ", penwidth=2.5" : "");
}

std::string DotAttributes(DotEdgeLook look) {
  const EdgeStyle style = StyleOf(look);
  return fmt::format(R"(color="{}", penwidth={}{})", style.color, style.width,
                     style.isDashed ? ", style=dashed" : "");
}

std::string DotLegend(const Timeline& timeline, const DotOptions& options,
                      const DotContent& content) {
  std::string html = "<<TABLE BORDER=\"0\" CELLSPACING=\"2\" CELLPADDING=\"1\">\n";
  html += Row(Title(timeline));
  if (timeline.start.begun)
    html += Row(PhaseText("start", timeline.start, timeline.run.resolution));
  if (timeline.stop.begun) html += Row(PhaseText("stop", timeline.stop, timeline.run.resolution));
  html += Row(Extent(timeline, options, content.plugins));
  if (!timeline.run.knowsEdges) {
    html +=
        Row("<B>Dependencies not known</B>: the run does not say which plugins waited for which");
  }
  if (content.foreign > 0) {
    html += Row(fmt::format("Left out: dependencies on plugins that the run does not have: {}",
                            content.foreign));
  }
  html += NodeRow(content.nodes);
  for (const DotEdgeLook look : content.edges) html += EdgeRow(look);
  return html + "</TABLE>>";
}
