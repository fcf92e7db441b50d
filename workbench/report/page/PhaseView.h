#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/timeline/Timeline.h"

/// Height of a plugin's row in pixels, as page.css has it.
constexpr int kRowHeight = 24;

/// A phase as the page shows it. Refers to the timeline, which must outlive it.
struct PhaseView {
  PhaseView(const Timeline& timeline, const PhaseTimeline& phase);

  bool IsStart() const { return &phase == &timeline.start; }
  const char* Word() const { return IsStart() ? "start" : "stop"; }
  const std::string& ID(std::size_t plugin) const { return timeline.plugins[plugin].id; }
  bool IsOnPath(std::size_t plugin) const { return onPath[plugin]; }

  /// A time as its place on the time axis, as "12.5%"; times outside of the phase are moved to its
  /// begin or end.
  std::string Place(std::int64_t at) const;
  std::string Width(std::int64_t from, std::int64_t to) const;

  std::string Ms(std::int64_t nanoseconds) const;

  /// Milliseconds since the phase's begin.
  std::string Since(std::int64_t at) const;

  /// Why the plugin failed in this phase; empty: it did not.
  const std::string& Reason(std::size_t plugin) const;

  /// The plugins that this one still waits for.
  std::vector<std::string> StillWaitsFor(std::size_t plugin) const;

  const Timeline& timeline;
  const PhaseTimeline& phase;
  std::vector<bool> onPath;         // by plugin
  std::vector<std::size_t> order;   // the plugins by begin; those that have not begun are last
  std::vector<std::size_t> places;  // by plugin: its place in `order`
};

/// What became of a plugin in a phase.
struct ResultWords {
  const char* key;   // for the style and the filter
  const char* text;  // for people
};
ResultWords WordsOf(const PhaseView& view, const PluginSpan& span);

/// All results that a phase can have, for the filter.
std::vector<ResultWords> AllResults();
