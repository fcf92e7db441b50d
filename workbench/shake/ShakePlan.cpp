#include "workbench/shake/ShakePlan.h"

#include <algorithm>
#include <utility>

#include "workbench/output/Text.h"
#include "workbench/shake/StartShuffle.h"

namespace {

constexpr std::int64_t kLeastDelay = 300;
constexpr std::int64_t kMostDelay = 20'000;

PlannedRun Shuffled(std::uint64_t seed, std::int64_t over) {
  return {{"--shuffle", std::to_string(seed), "--shuffle-over", std::to_string(over)}, ""};
}

/// The plugins in an order that depends on the seed, in `count` groups of nearly the same size;
/// fewer when there are fewer plugins.
std::vector<std::vector<std::string>> Groups(std::vector<std::string> plugins, std::size_t count,
                                             std::uint64_t seed) {
  std::vector<std::pair<std::uint64_t, std::string>> order;
  for (std::string& plugin : plugins) {
    const std::uint64_t hash = SeededHash(seed, plugin);
    order.emplace_back(hash, std::move(plugin));
  }
  std::sort(order.begin(), order.end());
  std::vector<std::vector<std::string>> groups(std::min(count, order.size()));
  for (std::size_t i = 0; i < order.size() && !groups.empty(); ++i) {
    groups[i % groups.size()].push_back(std::move(order[i].second));
  }
  return groups;
}

PlannedRun DelayGroup(const std::vector<std::string>& group, std::int64_t delay) {
  PlannedRun run;
  for (const std::string& plugin : group) {
    run.options.emplace_back("--delay");
    run.options.push_back(plugin + "=" + std::to_string(delay));
  }
  if (group.size() == 1) run.alone = group.front();
  return run;
}

bool IsPlain(char c) {
  const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  const bool isDigit = c >= '0' && c <= '9';
  const std::string others = "-_./=:,+\\";
  return isLetter || isDigit || others.find(c) != std::string::npos;
}

}  // namespace

bool PlannedRun::operator==(const PlannedRun& other) const {
  return options == other.options && alone == other.alone;
}

std::int64_t LongestDelay(std::int64_t startMs) {
  return std::clamp(startMs + startMs / 2 + 200, kLeastDelay, kMostDelay);
}

std::vector<PlannedRun> PlanRuns(const std::vector<std::string>& plugins, std::size_t runs,
                                 std::uint64_t firstSeed, std::int64_t delay) {
  const auto groups = Groups(plugins, runs / 2, firstSeed);
  std::vector<PlannedRun> plan;
  std::size_t group = 0;
  for (std::uint64_t seed = firstSeed; plan.size() < runs; seed += 2) {
    plan.push_back(Shuffled(seed, delay));
    plan.push_back(Shuffled(seed + 1, delay));
    for (int i = 0; i < 2 && group < groups.size(); ++i) {
      plan.push_back(DelayGroup(groups[group++], delay));
    }
  }
  plan.resize(runs);
  return plan;
}

PlannedRun DelayAlone(const std::string& plugin, std::int64_t delay) {
  return DelayGroup({plugin}, delay);
}

std::string CommandText(const std::vector<std::string>& options) {
  std::string text;
  for (const std::string& option : options) {
    const bool isPlain = !option.empty() && std::all_of(option.begin(), option.end(), &IsPlain);
    text += (text.empty() ? "" : " ") + (isPlain ? option : "\"" + Escaped(option) + "\"");
  }
  return text;
}
