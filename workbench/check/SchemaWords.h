#pragma once

#include <string>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/ModelGrammar.h"

// What the schemas refuse, in words.

/// An element as it is validated.
struct SchemaNode {
  const XmlNode* node = nullptr;
  const SchemaNode* parent = nullptr;  // null for the root
  const ElementSpec* spec = nullptr;   // null when the frame reads no such element here
};

/// What is wrong with an element or with an attribute of it.
enum class SchemaFault {
  kElement,           // it is not allowed here, or there is one already
  kMissingElement,    // an element in it is missing
  kAttribute,         // the attribute is not allowed
  kMissingAttribute,  // an attribute is missing
  kValue,             // of the element or attribute
  kText,              // between the elements in it
  kElementInText,     // an element or attribute where only a text is allowed
  kTwice,             // an entry before it has the same ID
  kOther
};

/// A value from a file in quotation marks, on one line: blanks and line breaks as one blank, a long
/// value cut.
std::string QuotedValue(const std::string& value);

/// One sentence: what is there and what is allowed. `attribute` is null when it is not about one.
std::string SchemaSentence(FileKind kind, SchemaFault fault, const SchemaNode& at,
                           const XmlAttribute* attribute);

/// What the frame makes of it, if no other rule says something of that place.
std::string SchemaEffect(FileKind kind, SchemaFault fault, const SchemaNode& at,
                         const XmlAttribute* attribute);
