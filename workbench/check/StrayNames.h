#pragma once

#include <string>
#include <vector>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/ModelGrammar.h"
#include "workbench/check/RuleFinding.h"

// The names in a model file that the frame does not read.

/// What is wrong with the name of an element or attribute.
enum class NameFault {
  kNone,         // the frame reads it, or it is in a namespace of its own and means nothing here
  kInNamespace,  // the frame reads this element, or one of a similar name, without a namespace
  kMisspelt,     // similar to a name that the frame reads here
  kMisplaced,    // the frame reads it in another place, or as an attribute instead of an element
  kUnknown       // nothing like it is read in this file
};

/// All elements with one such name in elements of one kind, in one file.
struct StrayElements {
  NameFault fault = NameFault::kNone;
  std::string advice;                    // what was probably meant; empty for nothing
  const ElementSpec* meant = nullptr;    // null for nothing
  std::vector<const XmlNode*> elements;  // in document order
  std::vector<const XmlNode*> lost;  // elements of `meant` that are not read; these, or in these
  const XmlNode* parent = nullptr;   // of the first
};

/// The elements of the file that have this fault, by their first places.
std::vector<StrayElements> FindStrayElements(const CheckedFile& file, NameFault fault);

/// All attributes with one such name at elements of one kind, in one file.
struct StrayAttributes {
  std::string advice;
  const AttributeSpec* meant = nullptr;         // null for nothing
  std::vector<const XmlNode*> elements;         // that have it
  std::vector<const XmlAttribute*> attributes;  // one of each
};

/// The attributes of the file that have this fault, by their first places.
std::vector<StrayAttributes> FindStrayAttributes(const CheckedFile& file, NameFault fault);

/// Adds a finding for each of them: "the attribute Id of <Plugin>, 3 times: WHAT".
void AddStrayAttributes(const CheckedFile& file, NameFault fault,
                        std::string (*what)(const StrayAttributes& stray), RuleFindings& findings);
