#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/StrayNames.h"
#include "workbench/check/Words.h"

namespace {

void CheckElements(const CheckedFile& file, RuleFindings& findings) {
  for (const StrayElements& stray : FindStrayElements(file, NameFault::kUnknown)) {
    const XmlNode& first = *stray.elements.front();
    const bool isLeaf = first.children.empty();
    findings.push_back(MakeFinding(file, first.place,
                                   Tag(first.name) + " in " + Tag(stray.parent->name) +
                                       Times(stray.elements.size()) +
                                       ": unknown; the frame reads " + "neither it nor " +
                                       (isLeaf ? "its text" : "what is in it"),
                                   first.name));
    AddOthers(file, stray.elements, findings.back());
  }
}

std::string What(const StrayAttributes& stray) {
  return stray.advice.empty() ? "unknown; the frame does not read it" : stray.advice;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    CheckElements(file, findings);
    AddStrayAttributes(file, NameFault::kUnknown, &What, findings);
  }
}

}  // namespace

TEV_RULE(NotRead) = {
    "TEV119",
    Severity::kWarning,
    "The frame does not know an element or attribute",
    "Nothing of this name, or of a similar one, is read in files of this kind. Perhaps it belongs "
    "to another kind of file, or to another program. The frame skips it without a message.",
    "<Vendor>Velmora</Vendor> in Product.xml",
    "Remove it, or write it as a comment.",
    &Check};
