#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/product/XmlTree.h"

/// The tags of one element of a text. Offsets are in bytes.
struct XmlTag {
  TextPlace place;                      // of the start tag
  std::vector<TextPlace> attributes;    // of the names, declarations of namespaces too
  std::vector<std::string_view> names;  // of the attributes, in the text
  TextPlace textPlace;                  // of the first visible text directly in the element
  std::size_t begin = 0;                // of the start tag's "<"
  std::size_t end = 0;                  // behind the start tag's ">"
  std::size_t endTag = 0;               // of the end tag's "<"; 0 when there is none: <a/>
};

struct XmlTags {
  std::vector<XmlTag> elements;  // in document order
  TextPlace doctypePlace;        // of <!DOCTYPE; 0 without one
};

/// Reads the tags of a text that is well-formed, which must outlive them. libxml2's tree has lines
/// without columns, and no ends of elements.
XmlTags ReadXmlTags(const std::string& text);

/// The place behind `text` that begins at `place`.
TextPlace PlaceBehind(TextPlace place, std::string_view text);
