#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Text.h"

namespace {

bool IsRequired(FileKind kind) {
  return kind == FileKind::kProduct || kind == FileKind::kDrivers || kind == FileKind::kPortal ||
         kind == FileKind::kPlatform;
}

constexpr char kRefused[] = ": the frame refuses the product, and nothing starts";

/// "DeviceDrivers.xml", "Platform.xml" and "Portal.xml" of the folder `begin`, which ends in "/".
std::vector<std::string> RequiredIn(const CheckedProduct& product, const std::string& begin) {
  std::vector<std::string> names;
  for (const CheckedFile& file : product.files) {
    const bool isThere = file.name.compare(0, begin.size(), begin) == 0;
    if (isThere && IsRequired(file.kind)) names.push_back(file.name.substr(begin.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// META_INFO does not exist: one finding for all files in it.
void AddFolder(const CheckedProduct& product, const std::string& folder, RuleFindings& findings) {
  std::set<const CheckedFile*> descriptions;
  for (const PluginEntry& entry : product.entries) {
    if (entry.descriptionFile != nullptr) descriptions.insert(entry.descriptionFile);
  }
  std::vector<std::string> missing = RequiredIn(product, folder + "/");
  if (!descriptions.empty()) {
    missing.push_back(Counted(descriptions.size(), "description") + " of plugins");
  }
  RuleFinding finding;
  finding.place = {folder, 0, 0};
  finding.message = "the folder does not exist, so that " + JoinNames(missing, missing.size()) +
                    " are missing" + kRefused + NameHint(product, folder);
  finding.subject = folder;
  finding.refused = true;
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const std::string folder = product.bin + "/META_INFO";
  const bool hasFolder = product.Exists(folder + "/");
  if (!hasFolder) AddFolder(product, folder, findings);
  for (const CheckedFile& file : product.files) {
    if (!IsRequired(file.kind) || !file.missing || file.isPipe || !file.readName.empty()) continue;
    if (!hasFolder && file.kind != FileKind::kProduct) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file);
    finding.message = WhyUnreadable(file) + kRefused + NameHint(product, file.name);
    finding.subject = file.name;
    finding.refused = true;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(MissingFile) = {
    "TEV101",
    Severity::kError,
    "A model file that every product must have is missing",
    "Product.xml, and DeviceDrivers.xml, Portal.xml and Platform.xml in META_INFO, must exist, "
    "even "
    "if they list nothing. When one of them and the .data file of the same name are both missing, "
    "Frame_Init fails and nothing is started. The frame reports only the first one; this rule "
    "reports all of them, the whole folder once, and names a file with other letter case or a "
    "similar name.",
    "META_INFO/portal.xml instead of META_INFO/Portal.xml, on a system where letter case counts",
    "Put the file where the message says, or give the one that is there its right name. A product "
    "without drivers needs a file with an empty <DAMDrivers/>.",
    &Check};
