#include "workbench/check/ElementLoss.h"
#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/StrayNames.h"
#include "workbench/check/Words.h"

namespace {

void CheckElements(const CheckedFile& file, RuleFindings& findings) {
  for (const StrayElements& stray : FindStrayElements(file, NameFault::kMisplaced)) {
    const XmlNode& first = *stray.elements.front();
    std::string message = Tag(first.name) + " in " + Tag(stray.parent->name) +
                          Times(stray.elements.size()) + ": " + stray.advice;
    const bool isList = stray.meant != nullptr && stray.meant->role != ElementRole::kSingle;
    if (isList) message += "; " + LossOf(file, *stray.meant, *stray.parent, stray.lost);
    findings.push_back(MakeFinding(file, first.place, std::move(message), first.name));
    AddOthers(file, stray.elements, findings.back());
  }
}

std::string What(const StrayAttributes& stray) {
  return stray.advice;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    CheckElements(file, findings);
    AddStrayAttributes(file, NameFault::kMisplaced, &What, findings);
  }
}

}  // namespace

TEV_RULE(Misplaced) = {
    "TEV112",
    Severity::kError,
    "An element or attribute stands where the frame does not read it",
    "The frame asks for every element by its whole path. An element in another place is not read, "
    "nor is what is in it, without a message. Some values are attributes and others are elements: "
    "an ID is an attribute in the lists of Product.xml, and an element in descriptions and in the "
    "catalogues.",
    "<Plugin ID=\"alarm.server\"/> directly in <ProductDescription>",
    "Move it to where the message says.",
    &Check};
