#include "workbench/timeline/Comparison.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <set>
#include <utility>

namespace {

constexpr std::int64_t kLeastPart = 20;  // a change is at least one twentieth

using Result = PluginSpan::Result;

/// How long each plugin of a start worked, by ID. Those that did not end are left out.
std::map<std::string, std::int64_t> Works(const Timeline& run) {
  std::map<std::string, std::int64_t> works;
  for (std::size_t i = 0; i < run.plugins.size(); ++i) {
    const PluginSpan& span = run.start.spans[i];
    if (span.HasEnded()) works.emplace(run.plugins[i].id, span.end - span.begin);
  }
  return works;
}

std::set<std::string> Ids(const Timeline& run) {
  std::set<std::string> ids;
  for (const PluginHead& plugin : run.plugins) ids.insert(plugin.id);
  return ids;
}

std::set<std::string> PathIds(const Timeline& run) {
  std::set<std::string> ids;
  for (const PathStep& step : run.start.path) ids.insert(run.plugins[step.plugin].id);
  return ids;
}

TimeChange MakeChange(const std::string& what, std::int64_t now, std::vector<std::int64_t> before) {
  std::sort(before.begin(), before.end());
  return {what, now, before[before.size() / 2], before.front(), before.back(), 0};
}

/// The coarsest of the runs' clocks.
std::int64_t Resolution(const Timeline& now, const std::vector<Timeline>& before) {
  std::int64_t resolution = now.run.resolution;
  for (const Timeline& run : before) resolution = std::max(resolution, run.run.resolution);
  return resolution;
}

/// Whether one of them had sleeps that end early and the other had not. A log does not say it.
bool SleptOtherwise(const Timeline& now, const Timeline& before) {
  for (const Timeline* run : {&now, &before}) {
    if (run->run.source != RecordedRun::Source::kRecord) return false;
  }
  return now.run.record.head.sleep != before.run.record.head.sleep;
}

void AddPhase(const char* name, PhaseTimeline Timeline::*phase, const Timeline& now,
              const std::vector<Timeline>& before, Comparison& comparison) {
  const auto isComplete = [phase](const Timeline& run) {
    return (run.*phase).IsComplete(phase == &Timeline::start);
  };
  std::vector<std::int64_t> times;
  for (const Timeline& run : before) {
    if (isComplete(run)) times.push_back((run.*phase).balance.wall);
  }
  if (times.empty() || !isComplete(now)) {
    comparison.incomplete.emplace_back(name);
    return;
  }
  TimeChange change = MakeChange(name, (now.*phase).balance.wall, std::move(times));
  change.resolution = Resolution(now, before);
  comparison.phases.push_back(std::move(change));
}

void AddTimes(const Timeline& now, const std::vector<Timeline>& before, Comparison& comparison) {
  std::map<std::string, std::vector<std::int64_t>> earlier;
  for (const Timeline& run : before) {
    for (const auto& [id, work] : Works(run)) earlier[id].push_back(work);
  }
  for (const auto& [id, work] : Works(now)) {
    const auto times = earlier.find(id);
    if (times == earlier.end()) continue;
    TimeChange change = MakeChange(id, work, times->second);
    change.resolution = Resolution(now, before);
    if (!IsChange(change)) continue;
    (change.Difference() > 0 ? comparison.slower : comparison.faster).push_back(change);
  }
  for (std::vector<TimeChange>* changes : {&comparison.slower, &comparison.faster}) {
    std::stable_sort(changes->begin(), changes->end(), [](const auto& a, const auto& b) {
      return std::abs(a.Difference()) > std::abs(b.Difference());
    });
  }
}

std::vector<std::string> Without(const std::set<std::string>& ids,
                                 const std::set<std::string>& others) {
  std::vector<std::string> rest;
  std::set_difference(ids.begin(), ids.end(), others.begin(), others.end(),
                      std::back_inserter(rest));
  return rest;
}

/// Those that every one of the runs' sets has, and those that any of them has.
struct Sets {
  std::set<std::string> all;
  std::set<std::string> any;
};

Sets Joined(const std::vector<std::set<std::string>>& sets) {
  Sets joined{sets.front(), {}};
  for (const std::set<std::string>& set : sets) {
    joined.any.insert(set.begin(), set.end());
    std::set<std::string> both;
    std::set_intersection(joined.all.begin(), joined.all.end(), set.begin(), set.end(),
                          std::inserter(both, both.end()));
    joined.all = std::move(both);
  }
  return joined;
}

void AddPathChanges(const Timeline& now, const std::vector<Timeline>& before,
                    Comparison& comparison) {
  std::vector<std::set<std::string>> paths;
  for (const Timeline& run : before) {
    if (run.start.path.empty()) return;  // not known
    paths.push_back(PathIds(run));
  }
  if (now.start.path.empty()) return;
  const Sets earlier = Joined(paths);
  const std::set<std::string> path = PathIds(now);
  comparison.ontoPath = Without(path, earlier.any);
  comparison.offPath = Without(earlier.all, path);
}

void AddResultChanges(const Timeline& now, const Timeline& last, Comparison& comparison) {
  std::map<std::string, Result> results;
  for (std::size_t i = 0; i < last.plugins.size(); ++i) {
    results.emplace(last.plugins[i].id, last.start.spans[i].result);
  }
  for (std::size_t i = 0; i < now.plugins.size(); ++i) {
    const auto before = results.find(now.plugins[i].id);
    const Result result = now.start.spans[i].result;
    if (before == results.end() || before->second == result) continue;
    comparison.results.push_back({now.plugins[i].id, before->second, result});
  }
}

}  // namespace

bool IsChange(const TimeChange& change) {
  if (change.now >= change.low && change.now <= change.high) return false;
  const std::int64_t difference = std::abs(change.Difference());
  // Both times may be off by nearly as much as their clock resolves.
  if (difference < 2 * change.resolution) return false;
  return difference >= kLeastChange && difference >= change.before / kLeastPart;
}

Comparison Compare(const Timeline& now, const std::vector<Timeline>& before) {
  Comparison comparison;
  comparison.runs = before.size();
  comparison.sleepsDiffer = std::any_of(
      before.begin(), before.end(), [&](const Timeline& run) { return SleptOtherwise(now, run); });
  AddPhase("start", &Timeline::start, now, before, comparison);
  AddPhase("stop", &Timeline::stop, now, before, comparison);
  AddTimes(now, before, comparison);
  std::vector<std::set<std::string>> ids;
  ids.reserve(before.size());
  for (const Timeline& run : before) ids.push_back(Ids(run));
  comparison.added = Without(Ids(now), Joined(ids).any);
  comparison.gone = Without(ids.back(), Ids(now));
  AddPathChanges(now, before, comparison);
  AddResultChanges(now, before.back(), comparison);
  return comparison;
}
