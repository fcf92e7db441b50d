#include "workbench/check/Rule.h"
#include "workbench/check/StrayNames.h"

namespace {

std::string What(const StrayAttributes& stray) {
  if (stray.meant == nullptr) return stray.advice + " It is not read";
  const std::string name = stray.meant->name;
  if (stray.elements.front()->Attribute(name) != nullptr) {
    return stray.advice + " It is not read; the " + name + " beside it counts";
  }
  const std::string absent = stray.meant->value == ValueKind::kTrue ? "false" : stray.meant->absent;
  return stray.advice + " It is not read: " + name + " reads as " +
         (absent.empty() ? "empty" : absent);
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    AddStrayAttributes(file, NameFault::kMisspelt, &What, findings);
  }
}

}  // namespace

TEV_RULE(MisspeltAttribute) = {
    "TEV111",
    Severity::kError,
    "The name of an attribute is misspelt",
    "The frame asks for attributes by name, compared letter by letter, capitals included. An "
    "attribute of another name is not read, without a message, and the one that was meant reads as "
    "absent.",
    R"(<Plugin Id="storage.server"/> instead of <Plugin ID="storage.server"/>)",
    "Give the attribute the name that the message names.",
    &Check};
