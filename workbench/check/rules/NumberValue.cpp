#include <cstdlib>
#include <string>

#include "workbench/check/FileFinding.h"
#include "workbench/check/ModelWalk.h"
#include "workbench/check/NumberText.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// How such a text reads: "0", "12", or "some other number" beyond 32 bits.
std::string Reading(const std::string& value) {
  return ExceedsInt(value) ? "some other number" : std::to_string(std::atoi(value.c_str()));
}

bool IsWrong(const std::string& value, ValueKind kind) {
  const bool isFlagOfYes = kind == ValueKind::kFlag && std::atoi(value.c_str()) == 1;
  if (value.empty() || (kind != ValueKind::kNumber && !isFlagOfYes)) return false;
  return !IsPlainNumber(value);
}

std::string Message(const std::string& what, const std::string& value) {
  const std::string why = ExceedsInt(value)
                              ? "it does not fit into 32 bits"
                              : "only digits at the beginning count, after blanks and one sign";
  return what + ": " + Quoted(value) + " reads as " + Reading(value) + ": " + why;
}

/// TEV304 reports a DependentType that does not read as 1.
bool IsWrongAttribute(const std::string& value, ValueKind kind) {
  return kind == ValueKind::kNumber && IsWrong(value, kind) &&
         (ExceedsInt(value) || std::atoi(value.c_str()) == 1);
}

// TEV209 says more of a plugin's Type.
void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    VisitKnown(file, [&](const KnownElement& element) {
      const XmlNode& node = element.node;
      const ElementSpec& spec = element.spec;
      const bool isPluginType = file.kind == FileKind::kPlugin && std::string(spec.name) == "Type";
      if (!isPluginType && IsWrong(node.text, spec.value)) {
        findings.push_back(
            MakeFinding(file, node.textPlace, Message(Tag(spec.name), node.text), spec.name));
      }
      for (const AttributeSpec& one : spec.attributes) {
        const XmlAttribute* attribute = node.Attribute(one.name);
        if (attribute == nullptr || !IsWrongAttribute(attribute->value, one.value)) continue;
        findings.push_back(MakeFinding(file, attribute->place, Message(one.name, attribute->value),
                                       node.Value("ID") + "/" + one.name));
      }
    });
  }
}

}  // namespace

TEV_RULE(NumberValue) = {
    "TEV116",
    Severity::kError,
    "A number reads otherwise than it is written",
    "The frame takes the digits at the beginning of the text, after blanks and one sign, and "
    "ignores the rest. A word has no digits there and reads as 0, not as the default. A number "
    "beyond 2147483647 reads as another one, which depends on the system.",
    "<Level>two</Level> in a <MenuItem> of a plugin, which reads as 0",
    "Write a whole number without anything behind it.",
    &Check};
