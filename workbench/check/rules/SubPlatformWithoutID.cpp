#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kProduct);
  for (const SubPlatform& subPlatform : product.subPlatforms) {
    if (subPlatform.node == nullptr || !subPlatform.id.empty()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, *subPlatform.node, "ID");
    finding.message = std::string(subPlatform.node->Attribute("ID") == nullptr
                                      ? "<SubPlatform> without an ID"
                                      : "<SubPlatform> with an empty ID") +
                      ": the frame tries to load " + product.bin +
                      "/.dll, and the stop of the product waits for it for ever";
    finding.subject = "ID";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(SubPlatformWithoutID) = {
    "TEV213",
    Severity::kError,
    "A sub platform has no ID",
    "The frame makes a record for it all the same. The start fails to load its library and goes "
    "on; the stop skips it without counting it as stopped and so never ends.",
    "<SubPlatform Version=\"1.4.0\"/>",
    "Give it its ID, or remove the entry.",
    &Check};
