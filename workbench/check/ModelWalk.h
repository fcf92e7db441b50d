#pragma once

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/ModelGrammar.h"

/// An element that the frame knows, as it stands in a file.
struct KnownElement {
  const CheckedFile& file;
  const XmlNode& node;
  const ElementSpec& spec;
  const KnownElement* parent;  // null for the root
};

/// Calls `visit(element)` for `element` and every element below it that the frame knows, in the
/// order of the file. Recurses as deep as the file, which the parser limits to 256 levels.
template <typename Visit>
void VisitKnown(const KnownElement& element, const Visit& visit) {
  visit(element);
  for (const XmlNode& child : element.node.children) {
    const ElementSpec* spec = child.space.empty() ? element.spec.Child(child.name) : nullptr;
    if (spec != nullptr) VisitKnown({element.file, child, *spec, &element}, visit);
  }
}

/// The same for all files in which the frame finds elements.
template <typename Visit>
void VisitKnown(const CheckedProduct& product, const Visit& visit) {
  for (const CheckedFile& file : product.files) {
    if (!file.HasContent()) continue;
    VisitKnown({file, file.tree.root, Grammar(file.kind), nullptr}, visit);
  }
}
