#pragma once

#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"

/// One rule of HUB check. Each is defined in a file of its own in rules/ and has a row in
/// RuleTable.cpp. A rule has no state, reads no file and only appends findings.
struct Rule {
  const char* id;           // "TEV203": the first digit is the area
  Severity severity;        // of all its findings, by what happens at run time
  const char* summary;      // one line, without a full stop
  const char* explanation;  // what the frame does and why that matters, in whole sentences
  const char* example;      // a few lines that have the fault, or a sentence when it is no text
  const char* remedy;       // what to do, in one or two sentences
  void (*check)(const CheckedProduct& product, RuleFindings& findings);
};

/// Defines the rule of a file in rules/: TEV_RULE(MissingFile) = {...}.
#define TEV_RULE(name)       \
  extern const Rule k##name; \
  const Rule k##name

/// Every rule, in the order of the IDs.
const std::vector<const Rule*>& AllRules();

/// The rule with this ID; null for none.
const Rule* FindRule(const std::string& id);

/// The findings of `rules`, each once, ordered by file, line, column and rule.
RuleFindings RunRules(const std::vector<const Rule*>& rules, const CheckedProduct& product);
