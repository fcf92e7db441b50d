#include <string>
#include <vector>

#include "workbench/check/FileFinding.h"
#include "workbench/check/ModelWalk.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The element's value, or its attributes when it has none.
std::string Shown(const XmlNode& node, const ElementSpec& spec) {
  if (spec.value != ValueKind::kNone) return node.text.empty() ? "empty" : Quoted(node.text);
  std::string text;
  for (const AttributeSpec& attribute : spec.attributes) {
    text += (text.empty() ? "" : " ") + std::string(attribute.name) + "=" +
            Quoted(node.Value(attribute.name));
  }
  return text;
}

void Compare(const CheckedFile& file, const std::vector<const XmlNode*>& nodes,
             const ElementSpec& spec, RuleFindings& findings) {
  for (std::size_t i = 1; i < nodes.size(); ++i) {
    RuleFinding finding = MakeFinding(file, nodes[i]->place,
                                      Tag(spec.name) + " occurs twice: the first counts, " +
                                          Shown(*nodes.front(), spec) +
                                          "; this one is not read: " + Shown(*nodes[i], spec),
                                      spec.name);
    finding.related.push_back({PlaceOf(file, *nodes.front()), "the first is here"});
    findings.push_back(std::move(finding));
  }
}

/// A group, such as <ReplaceAddon>, may stand twice; each value in it is read once.
void CheckChild(const CheckedFile& file, const XmlNode& node, const ElementSpec& child,
                RuleFindings& findings) {
  if (child.role != ElementRole::kSingle) return;
  const std::vector<const XmlNode*> nodes = Select(node, child.name);
  if (child.children.count == 0) return Compare(file, nodes, child, findings);
  for (const ElementSpec& value : child.children) {
    std::vector<const XmlNode*> values;
    for (const XmlNode* group : nodes) {
      const std::vector<const XmlNode*> here = Select(*group, value.name);
      values.insert(values.end(), here.begin(), here.end());
    }
    Compare(file, values, value, findings);
  }
}

bool IsGroup(const ElementSpec& spec) {
  return spec.role == ElementRole::kSingle && spec.children.count > 0;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    VisitKnown(file, [&](const KnownElement& element) {
      const XmlNode& node = element.node;
      const ElementSpec& spec = element.spec;
      if (IsGroup(spec) && &node != &file.tree.root) return;  // its parent compares
      for (const ElementSpec& child : spec.children) CheckChild(file, node, child, findings);
    });
  }
}

}  // namespace

TEV_RULE(ReadOnce) = {
    "TEV114",
    Severity::kWarning,
    "An element that is read once occurs twice",
    "Of several elements with one value the frame reads the first, even when that one is empty. "
    "The others are not read, without a message.",
    "<Version>2.7.1</Version> and below it <Version>2.8.0</Version>",
    "Keep the one that is meant.",
    &Check};
