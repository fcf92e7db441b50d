#include "workbench/report/page/PhaseView.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "workbench/report/Times.h"

namespace {

using Result = PluginSpan::Result;

/// "12.5%", without zeros at the end.
std::string Percent(std::int64_t part, std::int64_t whole) {
  if (whole <= 0) return "0%";
  std::string text =
      fmt::format("{:.3f}", 100.0 * static_cast<double>(part) / static_cast<double>(whole));
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
  return text + "%";
}

/// The plugins by begin, in the model's order those that began together or not at all.
std::vector<std::size_t> ByBegin(const PhaseTimeline& phase) {
  std::vector<std::size_t> order(phase.spans.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    const PluginSpan& first = phase.spans[a];
    const PluginSpan& second = phase.spans[b];
    if (first.HasBegun() != second.HasBegun()) return first.HasBegun();
    return first.begin < second.begin;
  });
  return order;
}

}  // namespace

PhaseView::PhaseView(const Timeline& aTimeline, const PhaseTimeline& aPhase)
    : timeline(aTimeline),
      phase(aPhase),
      onPath(aTimeline.plugins.size()),
      order(ByBegin(aPhase)),
      places(order.size()) {
  for (std::size_t place = 0; place < order.size(); ++place) places[order[place]] = place;
  for (const PathStep& step : phase.path) onPath[step.plugin] = true;
}

std::string PhaseView::Place(std::int64_t at) const {
  return Width(phase.begin, at);
}

std::string PhaseView::Width(std::int64_t from, std::int64_t to) const {
  const std::int64_t begin = std::clamp(from, phase.begin, phase.end);
  const std::int64_t end = std::clamp(to, begin, phase.end);
  return Percent(end - begin, phase.end - phase.begin);
}

std::string PhaseView::Ms(std::int64_t nanoseconds) const {
  return MsText(nanoseconds, timeline.run.resolution);
}

std::string PhaseView::Since(std::int64_t at) const {
  return Ms(std::max<std::int64_t>(at - phase.begin, 0));
}

const std::string& PhaseView::Reason(std::size_t plugin) const {
  const PluginRun& run = timeline.State(plugin);
  return IsStart() ? run.reason : run.stopReason;
}

std::vector<std::string> PhaseView::StillWaitsFor(std::size_t plugin) const {
  std::vector<std::string> others;
  for (const std::size_t other : phase.waitsFor[plugin]) {
    if (!phase.spans[other].HasEnded()) others.push_back(ID(other));
  }
  return others;
}

ResultWords WordsOf(const PhaseView& view, const PluginSpan& span) {
  switch (span.result) {
    case Result::kNotBegun:
      return {"not-begun", "not begun"};
    case Result::kNotReturned:
      if (span.codeEnd == kUnknown) return {"not-returned", "not returned"};
      return {"not-returned", view.IsStart() ? "not counted" : "not unmapped"};
    case Result::kOk:
      return {"ok", view.IsStart() ? "started" : "stopped"};
    case Result::kFailed:
      return {"failed", "Init failed"};
    case Result::kNotLoaded:
      return {"not-loaded", "not loaded"};
    case Result::kRefused:
      return {"refused", "stop refused"};
    case Result::kNothingToStop:
      return {"nothing", "nothing to stop"};
    case Result::kNotKnown:
      return {"not-known", "not known"};
  }
  return {"", ""};
}

std::vector<ResultWords> AllResults() {
  return {{"ok", "started or stopped"},   {"failed", "Init failed"},
          {"not-loaded", "not loaded"},   {"not-returned", "not returned"},
          {"not-begun", "not begun"},     {"refused", "stop refused"},
          {"nothing", "nothing to stop"}, {"not-known", "not known"}};
}
