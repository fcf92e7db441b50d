#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "workbench/check/Rule.h"
#include "workbench/check/RuleFinding.h"

// A baseline accepts known findings: so many of a rule on a plugin and a subject, wherever they
// stand. Plugin and subject are kept escaped, as in Escaped(), so that the file is valid UTF-8 and
// a name that is not is found again.

/// What a baseline knows a finding by.
struct FindingKey {
  std::string rule;
  std::string plugin;
  std::string subject;
};

FindingKey KeyOf(const RuleFinding& finding);
bool operator<(const FindingKey& a, const FindingKey& b);
bool operator==(const FindingKey& a, const FindingKey& b);

/// How many findings of each key are accepted.
using Baseline = std::map<FindingKey, std::size_t>;

/// The most findings of one key.
constexpr std::size_t kMostAccepted = 1'000'000'000;

/// The baseline that accepts `findings` and no other.
Baseline BaselineOf(const RuleFindings& findings);

/// The baseline's file: a JSON object, sorted, each key on a line of its own.
std::string BaselineText(const Baseline& baseline);

/// The file that accepts `findings` and no other.
std::string WriteBaseline(const RuleFindings& findings);

struct BaselineReading {
  Baseline baseline;
  std::string problem;  // "line 3: "cuont" is no member; did you mean "count"?"; empty: read
};

/// Reads a baseline's file, however its JSON is laid out. A rule that does not exist is no problem:
/// another version of HUB may have written it.
BaselineReading ReadBaseline(const std::string& text);

/// What a baseline makes of findings.
struct AppliedBaseline {
  std::vector<bool> accepted;             // by the finding's position; false: it is new
  Baseline absent;                        // what the rules that ran no longer find
  std::vector<std::string> unknownRules;  // rules of the baseline that do not exist, sorted
};

/// Of more findings of one key than the baseline accepts, the first ones are accepted. `ran`: the
/// rules that made the findings; `known`: all rules.
AppliedBaseline Apply(const Baseline& baseline, const RuleFindings& findings,
                      const std::vector<const Rule*>& ran, const std::vector<const Rule*>& known);
