#pragma once

#include <algorithm>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/ModelGrammar.h"

/// An element that the frame reads, as it stands in a file.
struct KnownElement {
  const CheckedFile& file;
  const XmlNode& node;
  const ElementSpec& spec;
  const KnownElement* parent;  // null for the root
};

/// Calls `visit(element)` for `element` and every element below it that the frame reads, parents
/// first. Of several elements of which only the first counts, the others are left out; so is
/// everything in an unknown element. Recurses as deep as the file, which the parser limits to 256
/// levels.
template <typename Visit>
void VisitKnown(const KnownElement& element, const Visit& visit) {
  visit(element);
  std::vector<const ElementSpec*> seen;
  for (const XmlNode& child : element.node.children) {
    const ElementSpec* spec = child.space.empty() ? element.spec.Child(child.name) : nullptr;
    if (spec == nullptr) continue;
    const bool firstCounts = spec->role == ElementRole::kSingle && spec->children.count == 0;
    if (firstCounts) {
      if (std::find(seen.begin(), seen.end(), spec) != seen.end()) continue;
      seen.push_back(spec);
    }
    VisitKnown({element.file, child, *spec, &element}, visit);
  }
}

/// The same from the root on. Does nothing for a file without content.
template <typename Visit>
void VisitKnown(const CheckedFile& file, const Visit& visit) {
  if (file.HasContent()) VisitKnown({file, file.tree.root, Grammar(file.kind), nullptr}, visit);
}

/// The same for all files.
template <typename Visit>
void VisitKnown(const CheckedProduct& product, const Visit& visit) {
  for (const CheckedFile& file : product.files) VisitKnown(file, visit);
}
