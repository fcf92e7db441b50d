#pragma once

#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"

/// A place where a file is not as its schema says. Plain value; `node` leads into the tree.
struct SchemaError {
  TextPlace place;                // of the attribute or ID that it is about, else of the element
  const XmlNode* node = nullptr;  // the element
  std::string attribute;          // empty when it is not about an attribute
  std::string message;            // what is there and what is allowed, in one line
  std::string effect;             // what the frame makes of it
  bool isUnknownName = false;     // an element or attribute, in no namespace, that is not read
};

/// What the schema of such files refuses in `tree`, in the order of the text; nothing in a text
/// that is not well-formed. After an element that is not expected the schema says nothing of the
/// elements behind it in the same parent.
///
/// Validates what the frame reads: entities replaced, and no file read for them. Takes time and
/// memory in proportion to the tree. Each thread compiles each schema once. Throws only
/// std::bad_alloc.
std::vector<SchemaError> ValidateAgainstSchema(FileKind kind, const XmlTree& tree);
