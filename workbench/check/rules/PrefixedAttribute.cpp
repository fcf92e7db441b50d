#include <string>

#include "workbench/check/ModelWalk.h"
#include "workbench/check/Rule.h"
#include "workbench/check/SchemaWords.h"
#include "workbench/check/Words.h"

namespace {

void Report(const KnownElement& element, const XmlAttribute& attribute, RuleFindings& findings) {
  const XmlAttribute* read = element.node.Attribute(attribute.name);
  RuleFinding finding;
  finding.place = PlaceOf(element.file, attribute.place);
  finding.message = "the attribute " + attribute.name + " of " + Tag(element.node.name) +
                    " is in the namespace " + QuotedValue(attribute.space);
  finding.message +=
      read == &attribute
          ? ": the frame does not look at the namespace and reads it as " + attribute.name
          : ": the frame reads the " + attribute.name + " before it, " + QuotedValue(read->value);
  finding.subject = element.node.name + " " + attribute.name;
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  VisitKnown(product, [&](const KnownElement& element) {
    for (const XmlAttribute& attribute : element.node.attributes) {
      const bool isKnown = element.spec.Attribute(attribute.name) != nullptr;
      if (isKnown && !attribute.space.empty()) Report(element, attribute, findings);
    }
  });
}

}  // namespace

TEV_RULE(PrefixedAttribute) = {
    "TEV122",
    Severity::kWarning,
    "An attribute has a prefix that the frame does not look at",
    "The frame looks an attribute up by its name without the prefix. So x:ID is read as ID. When "
    "an "
    "element has both, the first one in the file is read. Elements are another matter: one with a "
    "prefix or in a namespace is not read at all.",
    R"(<Plugin x:ID="a.server" ID="b.server"/>)",
    "Remove the prefix, or the attribute when another program put it there.",
    &Check};
