#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "workbench/check/Baseline.h"
#include "workbench/check/ProductChanges.h"
#include "workbench/check/Rule.h"
#include "workbench/check/RuleFinding.h"

/// Where a file lies, with "/" between names.
struct FilePath {
  std::string absolute;
  std::string shown;  // in a text
};

/// What HUB check prints, whatever the format. Plain value.
struct CheckReport {
  std::string toolVersion;     // "1.0.0"
  std::string productName;     // empty: not known
  std::string productVersion;  // empty: not known

  // The product's folder, with "/" between names.
  std::string folder;       // absolute: "/srv/site", "C:/site"
  std::string shownFolder;  // before a file's name in a text: "site/", "/srv/site/" or ""

  // Files, and folders with all that is in them, that lie elsewhere than in the product's folder,
  // by the name in the product.
  std::map<std::string, FilePath> elsewhere;

  std::vector<const Rule*> rules;           // that ran, in the order of the IDs
  RuleFindings findings;                    // in the order in which they are printed
  std::optional<AppliedBaseline> baseline;  // of `findings`; none when none was given
  std::optional<ProductChanges> changes;    // with --against; the baseline is then of that product
};

/// Where the file of this name in the product lies, if not in the product's folder.
std::optional<FilePath> Elsewhere(const CheckReport& report, const std::string& file);

/// Whether the baseline accepts the finding at this position; false without a baseline.
bool IsAccepted(const CheckReport& report, std::size_t finding);

struct FindingCounts {
  // Without those that the baseline accepts.
  std::size_t errors = 0;
  std::size_t warnings = 0;
  std::size_t notes = 0;

  std::size_t accepted = 0;
  std::size_t absent = 0;  // accepted by the baseline and no longer found
};

FindingCounts CountFindings(const CheckReport& report);

/// A text for each finding by which it is known again wherever it stands: 16 hexadecimal digits
/// made of its key and of how many findings before it have the same one.
std::vector<std::string> Fingerprints(const RuleFindings& findings);

/// The fingerprint of the finding with this key that follows `before` others.
std::string Fingerprint(const FindingKey& key, std::size_t before);
