#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

bool IsRequired(FileKind kind) {
  return kind == FileKind::kProduct || kind == FileKind::kDrivers || kind == FileKind::kPortal ||
         kind == FileKind::kPlatform;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (!IsRequired(file.kind) || !file.missing || file.isPipe || !file.readName.empty()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file);
    finding.message = WhyUnreadable(file) + ": the frame refuses the product, and nothing starts" +
                      NameHint(product, file.name);
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
    "reports all of them, and names a file with other letter case or a similar name.",
    "META_INFO/portal.xml instead of META_INFO/Portal.xml, on a system where letter case counts",
    "Put the file where the message says, or give the one that is there its right name. A product "
    "without drivers needs a file with an empty <DAMDrivers/>.",
    &Check};
