#include "workbench/check/ElementLoss.h"
#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/StrayNames.h"
#include "workbench/check/Words.h"

namespace {

std::string Space(const XmlNode& node) {
  return Tag(node.name) + " is in the namespace " + Quoted(node.space) +
         ", and the frame reads only elements without a namespace";
}

void CheckRoot(const CheckedFile& file, RuleFindings& findings) {
  const XmlNode& root = file.tree.root;
  if (root.space.empty() || root.name != RootName(file.kind)) return;
  findings.push_back(MakeFinding(
      file, root.place,
      Space(root) + ": " + ReadsAsEmpty(file.kind) + "; remove the namespace from the root element",
      root.name));
}

void CheckElements(const CheckedFile& file, RuleFindings& findings) {
  for (const StrayElements& stray : FindStrayElements(file, NameFault::kInNamespace)) {
    const XmlNode& first = *stray.elements.front();
    std::string message = Space(first);
    if (stray.meant != nullptr) {
      message += "; " + LossOf(file, *stray.meant, *stray.parent, stray.lost);
    }
    findings.push_back(MakeFinding(file, first.place, std::move(message), first.name));
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (!file.tree.wellFormed) continue;
    CheckRoot(file, findings);
    CheckElements(file, findings);
  }
}

}  // namespace

TEV_RULE(InNamespace) = {
    "TEV105",
    Severity::kError,
    "An element that the frame should read is in a namespace",
    "The frame asks for elements by their names alone, which finds only elements without a "
    "namespace. An xmlns attribute at the root puts the whole file into a namespace, so that it "
    "reads as empty, without a message. A prefix that is declared for other tools, such as xsi, "
    "does no harm.",
    R"(<ProductDescription xmlns="urn:velmora:product">)",
    "Remove the xmlns attribute, or the prefix of the element.",
    &Check};
