#include "workbench/timeline/RecordedWork.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <numeric>
#include <queue>
#include <utility>
#include <vector>

#include "workbench/output/Text.h"
#include "workbench/timeline/RecordedLooks.h"

namespace {

constexpr int kFirstKeyNumber = 100;
constexpr std::size_t kShownNames = 5;

/// Sums of the times of all plugins stay below this.
constexpr std::int64_t kLongestSum = std::numeric_limits<std::int64_t>::max() / 4;

std::string PhaseName(const Timeline& timeline, const PhaseTimeline& phase) {
  return &phase == &timeline.start ? RunPhase::kStart : RunPhase::kStop;
}

bool IsInOrder(const PhaseTimeline& phase, const PluginSpan& span) {
  return span.posted >= phase.begin && span.begin >= span.posted && span.end >= span.begin &&
         span.end <= phase.end;
}

/// The names of the plugins whose span is as `matches` says.
template <typename Matches>
std::vector<std::string> PluginsThat(const Timeline& timeline, const PhaseTimeline& phase,
                                     Matches matches) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < phase.spans.size(); ++i) {
    if (matches(phase.spans[i])) names.push_back(timeline.plugins[i].id);
  }
  return names;
}

/// Why the phase cannot be scheduled; empty when it can.
std::string WhyUnknown(const Timeline& timeline, const PhaseTimeline& phase) {
  const std::string name = PhaseName(timeline, phase);
  if (!timeline.run.knowsTasks) {
    return "a log does not say when the plugins' tasks were posted and begun; a flight record does";
  }
  if (!timeline.run.knowsEdges) return "it is not known what each plugin waits for";
  if (!phase.begun) return "the run has no " + name + " of plugins";
  const auto open = PluginsThat(timeline, phase, [&](const PluginSpan& span) {
    return !span.HasEnded() || (phase.ended && span.end > phase.end);
  });
  if (!open.empty()) {
    return "the " + name + " of " + JoinNames(open, kShownNames) + " did not end in it";
  }
  if (!phase.ended) return "the " + name + " did not end";
  if (phase.spans.empty()) return "the product has no plugin";
  const auto broken =
      PluginsThat(timeline, phase, [&](const PluginSpan& span) { return !IsInOrder(phase, span); });
  if (!broken.empty()) {
    return "it is not known when the " + name + " of " + JoinNames(broken, kShownNames) +
           " was posted and begun";
  }
  const auto plugins = static_cast<std::int64_t>(phase.spans.size());
  if (phase.end - phase.begin > kLongestSum / (plugins + 2)) {
    return "the " + name + " is too long to be one";
  }
  return std::string();
}

/// The places in the order in which the frame visits its plugins: that of their keys, which begin
/// with a number.
std::vector<std::size_t> Positions(const std::vector<PluginHead>& plugins) {
  std::vector<std::pair<std::string, std::size_t>> keys;
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    keys.emplace_back(std::to_string(kFirstKeyNumber + i) + "_" + plugins[i].id, i);
  }
  std::sort(keys.begin(), keys.end());
  std::vector<std::size_t> positions(plugins.size());
  for (std::size_t i = 0; i < keys.size(); ++i) positions[keys[i].second] = i;
  return positions;
}

/// The number after --workers; 0 for none.
std::size_t WorkersOption(const std::vector<std::string>& commandLine) {
  const std::string option = "--workers";
  for (std::size_t i = 0; i < commandLine.size(); ++i) {
    std::string value;
    if (commandLine[i] == option && i + 1 < commandLine.size()) value = commandLine[i + 1];
    if (commandLine[i].rfind(option + "=", 0) == 0)
      value = commandLine[i].substr(option.size() + 1);
    std::size_t workers = 0;
    std::from_chars(value.data(), value.data() + value.size(), workers);
    if (workers > 0) return workers;
  }
  return 0;
}

/// The frame asks for as many threads as there are plugins, and --workers limits them.
std::size_t ThreadsOf(const Timeline& timeline) {
  const std::size_t workers = WorkersOption(timeline.run.record.head.commandLine);
  const std::size_t plugins = timeline.plugins.size();
  return workers == 0 ? plugins : std::min(workers, plugins);
}

/// The plugins in the order of their posts.
std::vector<std::size_t> ByPost(const PhaseTimeline& phase, const PhaseWork& work) {
  std::vector<std::size_t> order(phase.spans.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return std::pair(phase.spans[a].posted, work.plugins[a].position) <
           std::pair(phase.spans[b].posted, work.plugins[b].position);
  });
  return order;
}

/// How long each task took to begin once it was posted and a thread was free.
void FillToBegin(const PhaseTimeline& phase, const std::vector<std::size_t>& byPost,
                 PhaseWork& work) {
  std::priority_queue<std::int64_t, std::vector<std::int64_t>, std::greater<>> free;
  for (std::size_t i = 0; i < work.threads; ++i) free.push(phase.begin);
  for (const std::size_t plugin : byPost) {
    const PluginSpan& span = phase.spans[plugin];
    const std::int64_t since = std::max(span.posted, free.top());
    free.pop();
    free.push(span.end);
    work.plugins[plugin].toBegin = std::max<std::int64_t>(span.begin - since, 0);
  }
}

}  // namespace

FrameLooks::Mode ModeOf(const Timeline& timeline) {
  return timeline.run.record.head.sleep == RunHead::kEarlySleep ? FrameLooks::Mode::kEarlyEnd
                                                                : FrameLooks::Mode::kSleep;
}

RecordedWork WorkOf(const Timeline& timeline, const PhaseTimeline& phase, FrameLooks::Mode mode) {
  RecordedWork recorded;
  recorded.unknown = WhyUnknown(timeline, phase);
  if (!recorded.unknown.empty()) return recorded;
  PhaseWork& work = recorded.work;
  const std::vector<std::size_t> positions = Positions(timeline.plugins);
  work.plugins.resize(phase.spans.size());
  for (std::size_t i = 0; i < work.plugins.size(); ++i) {
    PluginWork& plugin = work.plugins[i];
    plugin.waitsFor = phase.waitsFor[i];
    plugin.position = positions[i];
    plugin.work = phase.spans[i].end - phase.spans[i].begin;
  }
  if (!HasNoCycle(work.plugins)) {
    recorded = RecordedWork();
    recorded.unknown = "plugins depend on each other in a cycle, and yet their " +
                       PhaseName(timeline, phase) + " ended";
    return recorded;
  }
  recorded.wall = phase.end - phase.begin;
  work.threads = ThreadsOf(timeline);
  const std::vector<std::size_t> byPost = ByPost(phase, work);
  FillToBegin(phase, byPost, work);
  work.looks.mode = mode;
  recorded.resolution = timeline.run.resolution + FillLooks(phase, byPost, work);
  return recorded;
}
