#include <cstring>
#include <string>

#include "workbench/check/ModelWalk.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// A value that must be there, and what follows when it is not. The IDs of plugins, addons and
/// tools have rules of their own.
struct Required {
  FileKind kind;
  bool isAttribute;
  const char* element;  // that contains or has it
  const char* name;
  const char* consequence;
};

constexpr bool kElement = false;
constexpr bool kAttribute = true;

constexpr Required kRequired[] = {
    {FileKind::kProduct, kAttribute, "Platform", "ID",
     "the name of the platform is handed on empty"},
    {FileKind::kProduct, kAttribute, "Language", "ID", "a language without a name is handed on"},
    {FileKind::kPortal, kAttribute, "MenuItem", "ID", "a menu item without a name is handed on"},
    {FileKind::kPortal, kAttribute, "MenuItem", "Type", "a menu item without a kind is handed on"},
    {FileKind::kPlugin, kElement, "MenuItem", "ID", "a menu item without a name is handed on"},
    {FileKind::kInstalled, kAttribute, "Addon", "Version",
     "the addon is handed on without the version that is installed"},
    {FileKind::kInstalled, kAttribute, "Tool", "Version",
     "the tool is handed on without the version that is installed"},
    {FileKind::kAddonList, kElement, "Application", "ID",
     "an application without a name is handed on"},
    {FileKind::kAddon, kElement, "Application", "ID", "an application without a name is handed on"},
    {FileKind::kAddon, kElement, "Product", "ProductLogo",
     "the entry is skipped, and the versions in it count for no product"},
    {FileKind::kAddon, kElement, "ReplaceAddon", "ID", "no addon is replaced"},
    {FileKind::kAddon, kAttribute, "Service", "ID", "a service without a name is handed on"}};

bool IsBlankOrAbsent(const KnownElement& element, const Required& required) {
  return required.isAttribute ? element.node.Value(required.name).empty()
                              : TextAt(element.node, required.name).empty();
}

const XmlNode* PresentElement(const XmlNode& node, const Required& required) {
  if (required.isAttribute) return nullptr;
  const auto found = Select(node, required.name);
  return found.empty() ? nullptr : found.front();
}

void Report(const KnownElement& element, const Required& required, RuleFindings& findings) {
  const XmlNode& node = element.node;
  const XmlNode* present = PresentElement(node, required);
  const bool isEmpty = present != nullptr || node.Attribute(required.name) != nullptr;
  const std::string what =
      required.isAttribute ? "the attribute " + std::string(required.name) : Tag(required.name);
  RuleFinding finding;
  finding.place = required.isAttribute
                      ? PlaceOf(element.file, node, required.name)
                      : PlaceOf(element.file, present == nullptr ? node : *present);
  finding.message = what + (isEmpty ? " is empty in " : " is missing in ") + Tag(node.name) + ": " +
                    required.consequence;
  finding.subject = std::string(element.spec.name) + " " + required.name;
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  VisitKnown(product, [&](const KnownElement& element) {
    for (const Required& required : kRequired) {
      const bool applies = required.kind == element.file.kind &&
                           std::strcmp(required.element, element.spec.name) == 0 &&
                           (required.isAttribute ? element.spec.Attribute(required.name) != nullptr
                                                 : element.spec.Child(required.name) != nullptr);
      if (applies && IsBlankOrAbsent(element, required)) Report(element, required, findings);
    }
  });
}

}  // namespace

TEV_RULE(RequiredValue) = {
    "TEV120",
    Severity::kWarning,
    "A value that is needed is missing or empty",
    "The frame reads a missing or empty value as its default, without a message, and hands it on. "
    "A menu item, an application, a service or a language without a name is of no use to anybody. "
    "Other values that are missing have rules of their own, which say what is lost.",
    "<MenuItem><ID/></MenuItem>",
    "Add the value. The message says what follows without it.",
    &Check};
