// A baseline of HUB check: what is read is written and read again, and accepts what it names.

#include "workbench/check/Baseline.h"

#include <algorithm>

#include "fuzz/FuzzTarget.h"
#include "workbench/output/Text.h"

void Fuzz(const std::string& input) {
  const BaselineReading reading = ReadBaseline(input);
  if (!reading.problem.empty()) {
    Check(reading.baseline.empty(), "a baseline that is refused accepts nothing");
    Check(reading.problem == Escaped(reading.problem), "a problem is one line of plain text");
    return;
  }
  const BaselineReading again = ReadBaseline(BaselineText(reading.baseline));
  Check(again.problem.empty() && again.baseline == reading.baseline,
        "a baseline that was read is written and read the same");

  RuleFindings findings;
  for (const auto& [key, count] : reading.baseline) {
    RuleFinding finding;
    finding.rule = key.rule;
    finding.plugin = key.plugin;
    finding.subject = key.subject;
    findings.push_back(finding);
  }
  const std::vector<bool> accepted = Apply(reading.baseline, findings, {}, {}).accepted;
  Check(std::all_of(accepted.begin(), accepted.end(), [](bool each) { return each; }),
        "a baseline accepts the findings that it names");
}
