#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (!file.HasContent() || file.tree.doctypePlace.line == 0) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, file.tree.doctypePlace);
    finding.message =
        "a document type, which no model file needs: the entities and default attributes that it "
        "declares are read, a file that it names is not";
    finding.subject = file.name;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(DocumentType) = {
    "TEV123",
    Severity::kNote,
    "A model file has a <!DOCTYPE>",
    "The frame takes the values that a document type declares in the file itself: entities are "
    "replaced by their texts, and an attribute that an element does not have is read with the "
    "default that is declared for it. An entity that names another file reads as nothing, and a "
    "document type in another file is not read. Nothing is validated against it.",
    R"(<!DOCTYPE Plugin [<!ENTITY version "2.6.1">]>)",
    "Write the values where they belong and remove the document type.",
    &Check};
