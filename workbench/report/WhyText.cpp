#include "workbench/report/WhyText.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <vector>

#include "workbench/output/Text.h"
#include "workbench/report/Times.h"
#include "workbench/timeline/Problems.h"

namespace {

constexpr std::size_t kMostEdges = 40;

/// A dependency of one plugin on another.
struct Edge {
  std::size_t plugin = 0;
  std::size_t on = 0;
};

class Writer {
 public:
  Writer(const Timeline& timeline, const DeclaredAt& declaredAt)
      : m_timeline(timeline), m_start(timeline.start), m_declaredAt(declaredAt) {}

  std::string Why(std::size_t plugin) {
    const PluginSpan& span = m_start.spans[plugin];
    if (!m_start.begun) {
      Needs(plugin);
    } else if (!span.HasBegun()) {
      Line(Name(plugin) + " never began in this run");
      Blocked(plugin);
    } else {
      Line(fmt::format("{} began {} ms after the start of the plugins had begun", Name(plugin),
                       Since(span.begin)));
      Releases(plugin);
    }
    return m_text;
  }

  std::string WhyBefore(std::size_t plugin, std::size_t other) {
    std::vector<Edge> chain = Chain(plugin, other);
    if (!chain.empty()) {
      Line(Name(plugin) + " starts after " + Name(other) + ", because");
    } else if (chain = Chain(other, plugin); !chain.empty()) {
      Line(Name(other) + " starts after " + Name(plugin) + ", because");
    } else {
      Line("Nothing orders " + Name(plugin) + " and " + Name(other) +
           ": neither depends on the other, directly or through others");
    }
    Edges(chain);
    if (m_start.begun)
      WhatHappened(chain.empty() ? plugin : chain.front().plugin,
                   chain.empty() ? other : chain.back().on, !chain.empty());
    return m_text;
  }

 private:
  void Line(const std::string& text) { m_text += text + "\n"; }

  std::string Name(std::size_t plugin) const { return ShownID(m_timeline.plugins[plugin].id); }

  std::string Since(std::int64_t time) const {
    return MsText(std::max<std::int64_t>(time - m_start.begin, 0), m_timeline.run.resolution);
  }

  std::string Between(std::int64_t from, std::int64_t to) const {
    return MsText(std::max<std::int64_t>(to - from, 0), m_timeline.run.resolution);
  }

  /// "  (bin/META_INFO/a/a.xml:12:5)"; empty when the place is not known.
  std::string Place(const Edge& edge) const {
    const std::string place =
        m_declaredAt(m_timeline.plugins[edge.plugin].id, m_timeline.plugins[edge.on].id);
    return place.empty() ? place : "  (" + Escaped(place) + ")";
  }

  void Edges(const std::vector<Edge>& edges) {
    for (std::size_t i = 0; i < std::min(edges.size(), kMostEdges); ++i) {
      Line("  " + Name(edges[i].plugin) + " depends on " + Name(edges[i].on) + Place(edges[i]));
    }
    if (edges.size() > kMostEdges) Line(fmt::format("  and {} more", edges.size() - kMostEdges));
  }

  /// Every dependency that the plugin's start waits for, the nearest first.
  void Needs(std::size_t plugin) {
    std::vector<Edge> edges;
    std::vector<std::size_t> next = {plugin};
    std::set<std::size_t> seen = {plugin};
    for (std::size_t i = 0; i < next.size(); ++i) {
      for (const std::size_t on : m_start.waitsFor[next[i]]) {
        edges.push_back({next[i], on});
        if (seen.insert(on).second) next.push_back(on);
      }
    }
    if (edges.empty()) return Line(Name(plugin) + " depends on nothing: it starts first");
    Line(
        fmt::format("{} starts after {}, because", Name(plugin), Count(next.size() - 1, "plugin")));
    Edges(edges);
  }

  /// What a plugin that never began waits for, and why that was never done.
  void Blocked(std::size_t plugin) {
    const std::vector<NotReturned> hanging = FindNotReturned(m_timeline);
    for (const std::size_t on : m_start.waitsFor[plugin]) {
      const PluginSpan& span = m_start.spans[on];
      if (span.HasEnded()) continue;
      const auto same = [on](const NotReturned& other) { return other.plugin == on; };
      const bool hangs = std::any_of(hanging.begin(), hanging.end(), same);
      Line("  it waits for " + Name(on) +
           (hangs ? ", which began and never returned" : ", which never began") +
           Place({plugin, on}));
      Edges(Chain(on, plugin));
    }
  }

  /// What released the plugin, and what released that, back to the start's begin.
  void Releases(std::size_t plugin) {
    std::set<std::size_t> seen;
    while (seen.insert(plugin).second) {
      const PluginSpan& span = m_start.spans[plugin];
      Waiting(plugin, span);
      if (!span.releasedBy) return;
      plugin = *span.releasedBy;
    }
  }

  void Waiting(std::size_t plugin, const PluginSpan& span) {
    if (!m_timeline.run.knowsEdges) return Line("  what it waited for: not known");
    std::string line = "  " + Name(plugin);
    std::int64_t from = m_start.begin;
    if (span.releasedBy) {
      const PluginSpan& other = m_start.spans[*span.releasedBy];
      from = std::min(other.HasEnded() ? other.end : span.begin, span.begin);
      line += " waited for " + Name(*span.releasedBy) + ", done at " + Since(from) + " ms" +
              (m_start.waitsFor[plugin].size() > 1
                   ? fmt::format(", the last of {}", m_start.waitsFor[plugin].size())
                   : std::string()) +
              Place({plugin, *span.releasedBy});
    } else {
      Line(line + " depends on nothing");
      return Line("    it began " + Between(from, span.begin) +
                  " ms after the start had begun, and worked " + Worked(span));
    }
    Line(line);
    if (span.posted == kUnknown) {
      Line("    then " + Between(from, span.begin) + " ms for a look and a thread, and worked " +
           Worked(span));
      return;
    }
    Line("    then " + Between(from, span.posted) + " ms for the frame's look, " +
         Between(span.posted, span.begin) + " ms for a thread, and worked " + Worked(span));
  }

  std::string Worked(const PluginSpan& span) const {
    if (!span.HasEnded())
      return std::string("without an end until ") +
             (m_timeline.run.now > 0                               ? "now"
              : m_timeline.run.source == RecordedRun::Source::kLog ? "the log ended"
                                                                   : "the record ended");
    const char* how = span.result == PluginSpan::Result::kFailed      ? "; its Init failed"
                      : span.result == PluginSpan::Result::kNotLoaded ? "; it was not loaded"
                                                                      : "";
    return Between(span.begin, span.end) + " ms" + how;
  }

  /// The shortest chain of dependencies from `from` to `to`; empty for none.
  std::vector<Edge> Chain(std::size_t from, std::size_t to) const {
    std::vector<std::size_t> cameFrom(m_start.spans.size(), m_start.spans.size());
    std::vector<std::size_t> next = {from};
    for (std::size_t i = 0; i < next.size(); ++i) {
      for (const std::size_t on : m_start.waitsFor[next[i]]) {
        if (cameFrom[on] != m_start.spans.size()) continue;
        cameFrom[on] = next[i];
        next.push_back(on);
        if (on == to) return ChainTo(from, to, cameFrom);
      }
    }
    return {};
  }

  static std::vector<Edge> ChainTo(std::size_t from, std::size_t to,
                                   const std::vector<std::size_t>& cameFrom) {
    std::vector<Edge> chain;
    std::size_t at = to;
    do {
      chain.push_back({cameFrom[at], at});
      at = cameFrom[at];
    } while (at != from);
    std::reverse(chain.begin(), chain.end());
    return chain;
  }

  /// What the record says of the order of two plugins. `ordered`: `later` depends on `earlier`.
  void WhatHappened(std::size_t later, std::size_t earlier, bool ordered) {
    const PluginSpan& a = m_start.spans[later];
    const PluginSpan& b = m_start.spans[earlier];
    if (!a.HasBegun() || !b.HasBegun()) {
      if (a.HasBegun() || b.HasBegun()) {
        return Line("In this run " + Name(a.HasBegun() ? earlier : later) + " never began");
      }
      return Line("In this run neither of them began");
    }
    if (!ordered) return Line(Unordered(later, a, earlier, b));
    Line(fmt::format("In this run {} was done at {} ms, and {} began at {} ms", Name(earlier),
                     b.HasEnded() ? Since(b.end) : "-", Name(later), Since(a.begin)));
    if (!m_timeline.run.knowsEdges || !a.releasedBy) return;
    std::set<std::size_t> seen;
    std::size_t at = later;
    bool released = false;
    while (seen.insert(at).second && m_start.spans[at].releasedBy && !released) {
      at = *m_start.spans[at].releasedBy;
      released = at == earlier;
    }
    Line("  " + Name(later) + " was released by " + Name(*a.releasedBy) +
         Place({later, *a.releasedBy}));
    Line("  " + Name(earlier) + (released ? " was" : " was not") +
         " among the plugins that it waited for in this way");
  }

  std::string Unordered(std::size_t first, const PluginSpan& a, std::size_t second,
                        const PluginSpan& b) const {
    const auto precedes = [](const PluginSpan& x, const PluginSpan& y) {
      return x.HasEnded() && x.end <= y.begin;
    };
    if (precedes(a, b) || precedes(b, a)) {
      const bool aFirst = precedes(a, b);
      return "In this run " + Name(aFirst ? first : second) + " was done before " +
             Name(aFirst ? second : first) + " began, and that may change from run to run";
    }
    const bool aFirst = a.begin <= b.begin;
    return fmt::format(
        "In this run {} began first, at {} ms, and {} while it worked, at {} ms; that may change "
        "from run to run",
        Name(aFirst ? first : second), Since(aFirst ? a.begin : b.begin),
        Name(aFirst ? second : first), Since(aFirst ? b.begin : a.begin));
  }

  const Timeline& m_timeline;
  const PhaseTimeline& m_start;
  const DeclaredAt& m_declaredAt;
  std::string m_text;
};

}  // namespace

std::string WhyText(const Timeline& timeline, std::size_t plugin, const DeclaredAt& declaredAt) {
  return Writer(timeline, declaredAt).Why(plugin);
}

std::string WhyBeforeText(const Timeline& timeline, std::size_t plugin, std::size_t other,
                          const DeclaredAt& declaredAt) {
  return Writer(timeline, declaredAt).WhyBefore(plugin, other);
}
