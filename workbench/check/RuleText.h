#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/check/Rule.h"

// What HUB check prints of its rules, and how a user names them.

/// "files" of "TEV103": the name of the rule's area; empty for an ID without one.
std::string AreaOf(const std::string& id);

/// `text` with four blanks before each of its lines that is not empty.
std::string Indented(const std::string& text);

/// The rules with severity and summary, aligned, below the names of their areas. `rules`: in the
/// order of the IDs.
std::string RuleList(const std::vector<const Rule*>& rules);

/// Everything that a rule says of itself, wrapped to `columns`; its example is not wrapped.
std::string ExplainedRule(const Rule& rule, std::size_t columns);

struct RuleChoice {
  std::vector<const Rule*> rules;  // in the order of the IDs
  std::string problem;             // "--select: "TEV2O3" is no rule and no area"; empty for none
};

/// The rules of `all` that --select names, without those that --ignore names; all of them when
/// `select` is empty. Both are words with commas between them: a rule's ID ("TEV203"), or an area
/// by its beginning of an ID or its name ("TEV2", "plugins"); letter case does not count.
RuleChoice ChooseRules(const std::vector<const Rule*>& all, const std::string& select,
                       const std::string& ignore);

/// The rule with this ID, letter case aside; null for none.
const Rule* RuleNamed(const std::vector<const Rule*>& all, const std::string& id);

/// "there is no rule "TEV2O3"; did you mean "TEV203"?"
std::string NoSuchRule(const std::vector<const Rule*>& all, const std::string& id);
