#include "workbench/check/ElementLoss.h"
#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/StrayNames.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    for (const StrayElements& stray : FindStrayElements(file, NameFault::kMisspelt)) {
      const XmlNode& first = *stray.elements.front();
      std::string message = Tag(first.name) + Times(stray.elements.size()) + ": " + stray.advice;
      message += " " + Sentence(stray.meant == nullptr
                                    ? "it is not read"
                                    : LossOf(file, *stray.meant, *stray.parent, stray.lost));
      findings.push_back(MakeFinding(file, first.place, std::move(message), first.name));
      AddOthers(file, stray.elements, findings.back());
    }
  }
}

}  // namespace

TEV_RULE(MisspeltElement) = {
    "TEV110",
    Severity::kError,
    "The name of an element is misspelt",
    "The frame asks for elements by name, compared letter by letter, capitals included. It does "
    "not look at an element of another name nor at what is in it, and reports nothing: a list with "
    "a misspelt name is no list, and a value with a misspelt name reads as its default.",
    "<Plugns> instead of <Plugins>",
    "Give the element the name that the message names.",
    &Check};
