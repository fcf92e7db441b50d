#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "workbench/output/Severity.h"

/// A place in a product. Plain value.
struct Place {
  std::string file;  // relative to the product's folder, with "/" between names
  int line = 0;      // from 1; 0: the file as a whole
  int column = 0;    // in characters, from 1; 0: the whole line
};

/// Another place that belongs to a finding, and what stands there.
struct RelatedPlace {
  Place place;
  std::string message;
};

/// One thing that a rule says of a product. Plain value.
struct RuleFinding {
  std::string rule;                      // "TEV203"; set by RunRules
  Severity severity = Severity::kError;  // the rule's; set by RunRules
  Place place;
  std::string message;  // what is there, what the frame makes of it, what was probably meant
  std::vector<RelatedPlace> related;

  // Sets of related places, by their positions: removing what stands at all places of one set mends
  // the finding. The preferred set first; empty when it is mended otherwise.
  std::vector<std::vector<std::size_t>> choices;

  bool refused = false;  // because of this the frame refuses the product

  // What the finding is about, the same wherever it stands in the file: a baseline and the
  // fingerprints of SARIF know a finding again by rule, plugin and subject.
  std::string plugin;   // ID of the plugin, addon or tool; empty when it is about none
  std::string subject;  // the element, attribute, dependency, file name...; distinguishes findings
                        // of one rule on one plugin
};

using RuleFindings = std::vector<RuleFinding>;
