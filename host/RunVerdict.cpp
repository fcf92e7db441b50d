#include "host/RunVerdict.h"

#include <fmt/format.h>

#include <algorithm>

#include "workbench/output/Text.h"

namespace {

using State = PluginRun::State;

constexpr std::size_t kMostNames = 5;

template <typename Condition>
std::vector<std::string> Names(const RunState& state, Condition condition) {
  std::vector<std::string> names;
  for (const PluginRun& plugin : state.Plugins()) {
    if (IsStarted(plugin.head) && condition(plugin)) names.push_back(plugin.head.id);
  }
  return names;
}

std::vector<std::string> StartedAs(const RunState& state, State how) {
  return Names(state, [how](const PluginRun& plugin) { return plugin.started == how; });
}

/// "; a.server and b.server failed in Init"; empty when there are no names.
std::string Clause(const std::vector<std::string>& names, const std::string& one,
                   const std::string& many) {
  if (names.empty()) return std::string();
  return "; " + JoinNames(names, kMostNames) + " " + (names.size() == 1 ? one : many);
}

std::size_t CountAll(const RunState& state) {
  return Names(state, [](const PluginRun&) { return true; }).size();
}

bool NeverBegan(const PluginRun& plugin) {
  return plugin.started == State::kWaiting && plugin.startedAtNs < 0;
}

/// How the start ended, for a product with one plugin.
std::string SinglePluginText(const RunState& state) {
  const auto isIt = [](const PluginRun& plugin) { return IsStarted(plugin.head); };
  const auto plugin = std::find_if(state.Plugins().begin(), state.Plugins().end(), isIt);
  if (plugin->started == State::kStarted) return "the one plugin started";
  if (plugin->started != State::kWaiting) return "the one plugin did not start";
  return NeverBegan(*plugin) ? "the start of the one plugin had not begun"
                             : "the one plugin had not returned from its Init";
}

std::string StartedText(const RunState& state) {
  const std::size_t all = CountAll(state);
  const std::size_t started = StartedAs(state, State::kStarted).size();
  if (all == 0) return "there are no plugins to start";
  if (all == 1) return SinglePluginText(state);
  if (started == all) return fmt::format("all {} plugins started", all);
  return fmt::format("{} of {} started", started, Count(all, "plugin"));
}

/// Clauses on the plugins that failed to start or to stop.
std::string FailureClauses(const RunState& state) {
  const auto refused = [](const PluginRun& p) { return p.state == State::kStopRefused; };
  const auto late = [](const PluginRun& p) { return p.state == State::kStarted && p.stopCounted; };
  return Clause(StartedAs(state, State::kInitFailed), "failed in Init", "failed in Init") +
         Clause(StartedAs(state, State::kNotLoaded), "was not loaded", "were not loaded") +
         Clause(Names(state, refused), "refused to stop", "refused to stop") +
         Clause(Names(state, late), "was not stopped: its Init ended after the stop had begun",
                "were not stopped: their Init ended after the stop had begun");
}

std::vector<std::string> Errors(const RunState& state) {
  std::vector<std::string> errors;
  for (const RunEvent& finding : state.Findings()) {
    if (finding.severity == Severity::kError) errors.push_back(finding.text);
  }
  return errors;
}

/// "; the first error (and 2 more errors)"; empty when there are no errors.
std::string ErrorsText(const RunState& state) {
  const std::vector<std::string> errors = Errors(state);
  if (errors.empty()) return std::string();
  if (errors.size() == 1) return "; " + errors.front();
  return fmt::format("; {} (and {})", errors.front(), Count(errors.size() - 1, "more error"));
}

/// The plugins that `plugin` waits for: if it was never started, those that it depends on and that
/// have not been counted; otherwise those that depend on it and have not been stopped.
std::vector<std::string> BlockingPlugins(const RunState& state, const PluginRun& plugin) {
  const auto has = [](const std::vector<std::string>& ids, const std::string& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
  };
  return Names(state, [&](const PluginRun& other) {
    if (NeverBegan(plugin)) return !other.startCounted && has(plugin.head.dependsOn, other.head.id);
    return !other.stopCounted && has(other.head.dependsOn, plugin.head.id);
  });
}

/// "a.server never started: it waits for b.server": why the stop waits for a plugin whose code does
/// not run.
std::string WaitingClause(const RunState& state, const PluginRun& plugin) {
  if (plugin.head.id.empty() && plugin.head.kind == "platform") {
    return "the stop of a sub platform without an ID is never counted";
  }
  const std::string name = ShownID(plugin.head.id);
  const std::vector<std::string> others = BlockingPlugins(state, plugin);
  if (others.empty()) return "the stop of " + name + " was not counted";
  const bool itself = others.size() == 1 && others.front() == plugin.head.id;
  return name +
         (NeverBegan(plugin) ? " never started: it waits for "
                             : " was not stopped: it waits for the stop of ") +
         (itself ? "itself" : JoinNames(others, kMostNames));
}

/// The WaitingClause of each plugin that the stop waits for, at most five of them.
std::string WaitingClauses(const RunState& state) {
  std::string text;
  std::size_t left = 0;
  for (const PluginRun& plugin : state.Plugins()) {
    if (!IsStarted(plugin.head) || plugin.stopCounted) continue;
    if (++left > kMostNames) continue;
    text += "; ";
    text += WaitingClause(state, plugin);
  }
  if (left > kMostNames) text += "; and " + Count(left - kMostNames, "more plugin");
  return text;
}

std::string LeftBehindText(const RunFacts& facts, const RunState& state) {
  const auto inInit = [](const PluginRun& p) { return p.state == State::kInInit; };
  const auto loading = [](const PluginRun& p) { return p.state == State::kLoading; };
  const auto inUnInit = [](const PluginRun& p) {
    return p.state == State::kInUnInit && p.uninitMs < 0;
  };
  const auto unmapping = [](const PluginRun& p) {
    return p.state == State::kInUnInit && p.uninitMs >= 0;
  };
  std::string text =
      Clause(Names(state, loading), "is still being loaded", "are still being loaded") +
      Clause(Names(state, inInit), "has not returned from its Init",
             "have not returned from their Init") +
      Clause(Names(state, inUnInit), "has not returned from its UnInit",
             "have not returned from their UnInit") +
      Clause(Names(state, unmapping), "is still being unmapped", "are still being unmapped");
  const bool stopping = facts.pendingCall == "Frame_Stop";
  if (text.empty() && stopping && facts.unfinishedTasks == 0) text = WaitingClauses(state);
  if (text.empty() && !facts.pendingCall.empty()) {
    text = "; " + facts.pendingCall + " has not returned";
  }
  if (text.empty())
    text = "; " + Count(facts.unfinishedTasks, "task") + " of the pool had not ended";
  return text.substr(2);
}

}  // namespace

std::string NextCall(const RunState& state) {
  return state.FindPhase(RunPhase::kFrameStop) == nullptr ? "Frame_Stop" : "Frame_UnInit";
}

Verdict Judge(const RunFacts& facts, const RunState& state) {
  if (const auto& crash = state.Crash()) {
    const bool byExit = crash->number == kCutShort;
    return {"crashed", byExit ? kCutShort : kBySignal, "crashed: " + crash->text};
  }
  const bool initFailed = facts.initResult && *facts.initResult != 0;
  const bool startFailed = facts.startResult && *facts.startResult != 0;
  if (initFailed || startFailed || facts.callbackResult == false || !facts.failure.empty()) {
    return {"failed", kFrameFailed, "failed: " + facts.failure};
  }
  const std::string by = facts.stoppedBy.empty() ? "" : " (stopped by " + facts.stoppedBy + ")";
  if (!facts.pendingCall.empty() || facts.unfinishedTasks != 0) {
    return {"left-behind", kCutShort,
            "left behind: " + LeftBehindText(facts, state) + FailureClauses(state) + by};
  }
  if (!state.Up()) {
    return {"cut-short", kCutShort,
            "cut short: stopped" +
                (facts.stoppedBy.empty() ? std::string() : " by " + facts.stoppedBy) +
                " before it was up; " + StartedText(state) + FailureClauses(state)};
  }
  const std::string trouble = FailureClauses(state) + ErrorsText(state);
  if (!trouble.empty()) return {"degraded", kDegraded, "degraded: " + StartedText(state) + trouble};
  return {"up", kOk, "up: " + StartedText(state)};
}
