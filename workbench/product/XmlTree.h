#pragma once

#include <string>
#include <string_view>
#include <vector>

/// A place in a text, both from 1; a column counts characters. 0: not known.
struct TextPlace {
  int line = 0;
  int column = 0;
};

struct XmlAttribute {
  std::string name;   // without a prefix
  std::string space;  // its namespace; empty for none
  std::string value;  // entities replaced
  TextPlace place;    // of its name
};

/// One element of a file, with what lies in it.
struct XmlNode {
  std::string name;     // without a prefix
  std::string space;    // its namespace; empty for none
  std::string text;     // its direct text, entities replaced, joined; empty when it is blank
  TextPlace place;      // of its "<"
  TextPlace textPlace;  // of the first visible character of its text; 0 when it has none
  std::vector<XmlAttribute> attributes;
  std::vector<XmlNode> children;  // elements only

  /// The attribute that the frame reads by this name: the first one, in whatever namespace.
  const XmlAttribute* Attribute(std::string_view attribute) const;

  /// The value of that attribute; empty without one.
  const std::string& Value(std::string_view attribute) const;
};

/// A text or an attribute's value that is too long for the frame, which reads it as absent.
struct TooLongText {
  std::string name;  // of the element or attribute
  bool isAttribute = false;
  TextPlace place;  // of the element or attribute
};

/// The elements of an XML text as a tree, each with its place. Nothing is looked up by searching,
/// so that reading takes time and memory in proportion to the text. Plain value.
struct XmlTree {
  bool wellFormed = false;
  XmlNode root;         // empty when the text is not well-formed
  std::string problem;  // why it is not well-formed, in one line
  TextPlace problemPlace;
  std::string encoding;    // as the XML declaration has it; empty without one
  TextPlace doctypePlace;  // of <!DOCTYPE; 0 without one
  std::vector<TooLongText> tooLong;
};

/// Parses `text`, a model file's bytes, by the options that the frame uses: as UTF-8, whatever
/// encoding it declares. libxml2's messages are not printed. Throws only std::bad_alloc.
XmlTree ParseXmlTree(const std::string& text);

/// The elements that the XPath `path` below `node` selects, in document order: "Plugins/Plugin".
/// Elements in a namespace are not selected.
std::vector<const XmlNode*> Select(const XmlNode& node, std::string_view path);

/// The text of the first of them; empty without one, and when it has none.
const std::string& TextAt(const XmlNode& node, std::string_view path);

/// An entry of a list as the frame reads it.
struct ListEntry {
  const XmlNode* node = nullptr;     // null when the frame counts an entry but reads none
  const XmlNode* section = nullptr;  // that contains it, or the second section when node is null
};

/// The entries of the list `path`. The frame counts all matching elements and then reads each by
/// its position, which XPath counts in every section anew: position 3 is the third entry of the
/// first section that has three. So a list in two sections has entries that are never read.
std::vector<ListEntry> SelectList(const XmlNode& node, std::string_view path);
