#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (file.readName.empty() || file.readName == file.name) continue;
    const std::string xml = file.name.substr(file.name.rfind('/') + 1);
    const std::string advice = file.missing
                                   ? "if its content is right, rename it to " + xml
                                   : "changes in " + xml + " do not count while it " + file.problem;
    findings.push_back(MakeFinding(
        file, {}, "is read instead of " + xml + ", which " + file.problem + "; " + advice));
  }
}

}  // namespace

TEV_RULE(StandIn) = {
    "TEV107",
    Severity::kWarning,
    "A .data file is read instead of a model file",
    "When a model file is missing, empty or not readable, the frame reads the file of the same "
    "name that ends in .data instead. Nothing reports that: the frame's messages name the .xml "
    "file. A .data file that was forgotten keeps what was deleted, perhaps an older state.",
    "META_INFO/Portal.data, and no META_INFO/Portal.xml",
    "If the .data file is what you want, rename it to .xml; otherwise restore the .xml file.",
    &Check};
