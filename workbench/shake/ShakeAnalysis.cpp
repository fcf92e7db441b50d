#include "workbench/shake/ShakeAnalysis.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace {

using Kind = StartOutcome::Kind;
using Runs = std::vector<const ShakeRun*>;

/// How a start ended, where runs are compared.
using Ending = std::pair<Kind, std::string>;

Ending EndingOf(const StartOutcome& outcome) {
  return {outcome.kind, outcome.IsUp() ? std::string() : ReasonClass(outcome.reason)};
}

/// The plugins that each one waits for, directly or not.
class Ancestors {
 public:
  explicit Ancestors(const std::vector<PluginHead>& plugins) {
    for (const PluginHead& plugin : plugins) m_direct[plugin.id] = plugin.dependsOn;
    for (const PluginHead& plugin : plugins) Collect(plugin.id, m_all[plugin.id]);
  }

  const std::set<std::string>& Of(const std::string& plugin) const { return m_all.at(plugin); }

  bool AreOrdered(const std::string& one, const std::string& other) const {
    return one == other || Of(one).count(other) != 0 || Of(other).count(one) != 0;
  }

 private:
  void Collect(const std::string& from, std::set<std::string>& into) {
    std::vector<std::string> rest = m_direct[from];
    while (!rest.empty()) {
      const std::string id = std::move(rest.back());
      rest.pop_back();
      if (m_direct.count(id) == 0 || !into.insert(id).second) continue;
      const std::vector<std::string>& next = m_direct[id];
      rest.insert(rest.end(), next.begin(), next.end());
    }
  }

  std::map<std::string, std::vector<std::string>> m_direct;
  std::map<std::string, std::set<std::string>> m_all;
};

/// One way in which a plugin ends in some runs and not in others.
struct Change {
  std::string plugin;
  Runs bad;              // it ends in this way
  Runs good;             // it ends in its usual way
  std::size_t runs = 0;  // in which its end is known

  const StartOutcome& Outcome() const { return bad.front()->Of(plugin); }
};

/// Another plugin that may have to be up before one with a Change.
struct Candidate {
  std::string other;
  std::size_t explained = 0;  // bad runs in which it was not up
  Runs alone;                 // runs in which it alone was delayed, and the plugin ended badly
  std::size_t tried = 0;      // all runs in which it alone was delayed
};

bool WasUp(const ShakeRun& run, const std::string& plugin, const std::string& other) {
  return run.Order(plugin, other) == StartOrder::kAfter;
}

class Analysis {
 public:
  Analysis(const std::vector<PluginHead>& plugins, const std::vector<ShakeRun>& runs)
      : m_plugins(plugins), m_runs(runs), m_ancestors(plugins) {}

  ShakeAnalysis Make() {
    std::vector<Change> changes;
    for (const PluginHead& plugin : m_plugins) FindChanges(plugin.id, changes);
    for (const Change& change : changes) m_changing.insert(change.plugin);
    std::vector<const Change*> own;
    for (const Change& change : changes) {
      const std::string because = FailedDependency(change);
      if (because.empty()) {
        own.push_back(&change);
      } else {
        m_result.consequences.push_back(NoteOf(change, because));
      }
    }
    for (const Change* change : own) FindShown(*change);
    for (const Change* change : own) Explain(*change);
    return std::move(m_result);
  }

 private:
  void FindChanges(const std::string& plugin, std::vector<Change>& changes) {
    std::map<Ending, Runs> endings;
    std::size_t known = 0;
    for (const ShakeRun& run : m_runs) {
      const StartOutcome& outcome = run.Of(plugin);
      if (outcome.kind == Kind::kUnknown) continue;
      endings[EndingOf(outcome)].push_back(&run);
      ++known;
    }
    const auto usual = UsualEnding(endings);
    if (usual == endings.end()) return;
    for (const auto& [ending, runs] : endings) {
      if (ending != usual->first) changes.push_back({plugin, runs, usual->second, known});
    }
    if (endings.size() == 1 && usual->first.first != Kind::kOk) {
      m_result.always.push_back(NoteOf({plugin, usual->second, {}, known}, std::string()));
    }
  }

  /// That it is up, if it ever is; otherwise the most frequent one.
  static std::map<Ending, Runs>::iterator UsualEnding(std::map<Ending, Runs>& endings) {
    const auto up = endings.find({Kind::kOk, std::string()});
    if (up != endings.end()) return up;
    return std::max_element(endings.begin(), endings.end(), [](const auto& one, const auto& other) {
      return one.second.size() < other.second.size();
    });
  }

  static PluginNote NoteOf(const Change& change, const std::string& because) {
    const StartOutcome& outcome = change.Outcome();
    return {change.plugin,
            outcome.kind,
            outcome.reason,
            change.bad.size(),
            change.runs,
            because,
            change.bad.front()->options};
  }

  /// A dependency whose result changes and which is not up in any of the bad runs.
  std::string FailedDependency(const Change& change) const {
    const std::set<std::string>& ancestors = m_ancestors.Of(change.plugin);
    for (const PluginHead& plugin : m_plugins) {
      if (ancestors.count(plugin.id) == 0 || m_changing.count(plugin.id) == 0) continue;
      const bool always =
          std::all_of(change.bad.begin(), change.bad.end(), [&](const ShakeRun* run) {
            return run->Of(plugin.id).kind != Kind::kUnknown && !run->Of(plugin.id).IsUp();
          });
      if (always) return plugin.id;
    }
    return std::string();
  }

  /// The plugins that were up, or came up, whenever it was well; those that were not up in most of
  /// the bad runs first.
  std::vector<Candidate> CandidatesFor(const Change& change) const {
    std::vector<Candidate> candidates;
    for (const PluginHead& plugin : m_plugins) {
      const std::string& other = plugin.id;
      if (change.good.front()->plugins.count(other) == 0) continue;
      if (m_ancestors.AreOrdered(change.plugin, other)) continue;
      const bool neededWhenWell =
          std::all_of(change.good.begin(), change.good.end(), [&](const ShakeRun* run) {
            return run->Order(change.plugin, other) != StartOrder::kBefore;
          });
      if (neededWhenWell) candidates.push_back(MakeCandidate(change, other));
    }
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& one, const Candidate& other) {
                       return one.explained > other.explained;
                     });
    return candidates;
  }

  Candidate MakeCandidate(const Change& change, const std::string& other) const {
    Candidate candidate{other, 0, {}, 0};
    for (const ShakeRun* run : change.bad) {
      if (WasUp(*run, change.plugin, other)) continue;
      ++candidate.explained;
      if (run->alone == other) candidate.alone.push_back(run);
    }
    for (const ShakeRun& run : m_runs) {
      if (run.alone == other) ++candidate.tried;
    }
    return candidate;
  }

  static bool IsShown(const Candidate& candidate) {
    return candidate.alone.size() >= kExperimentRuns;
  }

  /// Notes which delays of one plugin alone make this one end badly.
  void FindShown(const Change& change) {
    for (const Candidate& candidate : CandidatesFor(change)) {
      if (IsShown(candidate)) m_shown[change.plugin].insert(candidate.other);
    }
  }

  /// Whether a delay of `plugin` makes `later` late as well: it waits for it, or fails without it.
  bool IsBehind(const std::string& later, const std::string& plugin) const {
    if (m_ancestors.Of(later).count(plugin) != 0) return true;
    const auto shown = m_shown.find(later);
    return shown != m_shown.end() && shown->second.count(plugin) != 0;
  }

  void Explain(const Change& change) {
    const std::vector<Candidate> candidates = CandidatesFor(change);
    std::vector<Candidate> shown;
    for (const Candidate& candidate : candidates) {
      if (IsShown(candidate) && !IsExplained(candidate, candidates)) shown.push_back(candidate);
    }
    for (const Candidate& candidate : shown) {
      m_result.missing.push_back(MissingOf(change, {candidate.other}, *candidate.alone.front()));
      m_result.missing.back().isShown = true;
    }
    Change rest = change;
    rest.bad.clear();
    for (const ShakeRun* run : change.bad) {
      const bool isExplained = std::any_of(shown.begin(), shown.end(), [&](const Candidate& known) {
        return !WasUp(*run, change.plugin, known.other);
      });
      if (!isExplained) rest.bad.push_back(run);
    }
    PlanExperiments(change, candidates, shown, rest.bad);
    if (!rest.bad.empty()) GuessAt(rest);
  }

  /// Whether another shown plugin is late whenever this one is delayed, and is enough on its own.
  bool IsExplained(const Candidate& candidate, const std::vector<Candidate>& candidates) const {
    return std::any_of(candidates.begin(), candidates.end(), [&](const Candidate& other) {
      return IsShown(other) && IsBehind(other.other, candidate.other) &&
             !IsBehind(candidate.other, other.other);
    });
  }

  /// Candidates that were late too where the shown ones were delayed alone, and those for the runs
  /// that no shown one explains.
  void PlanExperiments(const Change& change, const std::vector<Candidate>& candidates,
                       const std::vector<Candidate>& shown, const Runs& unexplained) {
    const auto isLateIn = [&](const Candidate& candidate, const Runs& runs) {
      return std::any_of(runs.begin(), runs.end(), [&](const ShakeRun* run) {
        return !WasUp(*run, change.plugin, candidate.other);
      });
    };
    for (const Candidate& candidate : candidates) {
      if (candidate.tried >= kExperimentRuns) continue;
      const bool isWanted = isLateIn(candidate, unexplained) ||
                            std::any_of(shown.begin(), shown.end(), [&](const Candidate& known) {
                              return isLateIn(candidate, known.alone);
                            });
      std::vector<std::string>& wanted = m_result.experiments;
      if (isWanted && std::count(wanted.begin(), wanted.end(), candidate.other) == 0) {
        wanted.push_back(candidate.other);
      }
    }
  }

  /// The plugins that explain all these runs, if any: no run says which of them it is.
  void GuessAt(const Change& change) {
    std::vector<std::string> others;
    for (const Candidate& candidate : CandidatesFor(change)) {
      if (candidate.explained == change.bad.size()) others.push_back(candidate.other);
    }
    if (others.empty()) {
      m_result.unexplained.push_back(NoteOf(change, std::string()));
    } else {
      m_result.missing.push_back(MissingOf(change, std::move(others), *change.bad.front()));
    }
  }

  static MissingDependency MissingOf(const Change& change, std::vector<std::string> others,
                                     const ShakeRun& run) {
    MissingDependency missing;
    missing.plugin = change.plugin;
    missing.kind = run.Of(change.plugin).kind;
    missing.reason = run.Of(change.plugin).reason;
    missing.others = std::move(others);
    missing.options = run.options;
    OrderEvidence& evidence = missing.evidence;
    const std::string& other = missing.others.front();
    for (const ShakeRun* bad : change.bad) {
      const bool wasUp = WasUp(*bad, change.plugin, other);
      ++(wasUp ? evidence.after : evidence.before);
      if (!wasUp) ++evidence.failedBefore;
    }
    for (const ShakeRun* good : change.good) {
      const StartOrder order = good->Order(change.plugin, other);
      if (order == StartOrder::kBefore) ++evidence.before;
      if (order != StartOrder::kAfter) continue;
      ++evidence.after;
      ++evidence.wellAfter;
    }
    return missing;
  }

  const std::vector<PluginHead>& m_plugins;
  const std::vector<ShakeRun>& m_runs;
  const Ancestors m_ancestors;
  std::set<std::string> m_changing;
  std::map<std::string, std::set<std::string>> m_shown;
  ShakeAnalysis m_result;
};

}  // namespace

bool OrderEvidence::operator==(const OrderEvidence& other) const {
  return before == other.before && failedBefore == other.failedBefore && after == other.after &&
         wellAfter == other.wellAfter;
}

bool PluginNote::operator==(const PluginNote& other) const {
  return plugin == other.plugin && kind == other.kind && reason == other.reason &&
         times == other.times && runs == other.runs && because == other.because &&
         options == other.options;
}

ShakeAnalysis Analyse(const std::vector<PluginHead>& plugins, const std::vector<ShakeRun>& runs) {
  return Analysis(plugins, runs).Make();
}
