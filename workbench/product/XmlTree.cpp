#include "workbench/product/XmlTree.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>

#include "workbench/product/XmlMessages.h"
#include "workbench/product/XmlTags.h"
#include "workbench/product/XmlText.h"

namespace {

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

std::string FromXml(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

std::string SpaceOf(const xmlNs* space) {
  return space == nullptr ? std::string() : FromXml(space->href);
}

bool IsBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

/// What the XML declaration at the beginning of `text` says; the parser's document has "UTF-8"
/// instead, the encoding that it was given.
std::string DeclaredEncoding(const std::string& text) {
  const std::size_t begin = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
  if (text.compare(begin, 5, "<?xml") != 0) return std::string();
  const std::string_view declaration =
      std::string_view(text).substr(begin, text.find("?>", begin) - begin);
  const std::size_t name = declaration.find("encoding");
  if (name == std::string_view::npos) return std::string();
  const std::size_t quote = declaration.find_first_of("\"'", name);
  if (quote == std::string_view::npos) return std::string();
  const std::size_t end = declaration.find(declaration[quote], quote + 1);
  if (end == std::string_view::npos) return std::string();
  return std::string(declaration.substr(quote + 1, end - quote - 1));
}

/// Copies libxml2's tree, element by element in document order, as the tags stand in the text. The
/// parser limits the depth to 256 levels.
class TreeCopy {
 public:
  TreeCopy(const xmlDoc* document, const std::string& text)
      : m_document(document), m_tags(ReadXmlTags(text)) {}

  XmlTree Copy() {
    XmlTree tree;
    tree.wellFormed = true;
    const xmlNode* root = xmlDocGetRootElement(m_document);
    if (root != nullptr) tree.root = CopyElement(root);
    tree.doctypePlace = m_tags.doctypePlace;
    tree.tooLong = std::move(m_tooLong);
    return tree;
  }

 private:
  XmlNode CopyElement(const xmlNode* element) {
    XmlNode node;
    const XmlTag& tag = m_tags.elements[m_next++];
    node.name = FromXml(element->name);
    node.space = SpaceOf(element->ns);
    node.place = tag.place;
    CopyAttributes(node, element, tag);
    XmlText text(m_document);
    if (text.Append(element->children)) {
      node.text = text.Text();
    } else {
      m_tooLong.push_back({node.name, false, node.place});
    }
    if (IsBlank(node.text)) {
      node.text.clear();
    } else {
      node.textPlace = tag.textPlace;
    }
    for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
      if (child->type == XML_ELEMENT_NODE) node.children.push_back(CopyElement(child));
    }
    return node;
  }

  void CopyAttributes(XmlNode& node, const xmlNode* element, const XmlTag& tag) {
    for (const xmlAttr* from = element->properties; from != nullptr; from = from->next) {
      XmlAttribute attribute;
      attribute.name = FromXml(from->name);
      attribute.space = SpaceOf(from->ns);
      attribute.place = PlaceOf(attribute.name, tag);
      XmlText text(m_document);
      if (text.Append(from->children)) {
        attribute.value = text.Text();
      } else {
        m_tooLong.push_back({attribute.name, true, attribute.place});
      }
      node.attributes.push_back(std::move(attribute));
    }
    CopyDefaults(node, tag);
  }

  /// Adds the attributes whose values the file's own DOCTYPE declares.
  void CopyDefaults(XmlNode& node, const XmlTag& tag) const {
    xmlDtd* subset = m_document->intSubset;
    const xmlElement* declared =
        subset == nullptr
            ? nullptr
            : xmlGetDtdElementDesc(subset, reinterpret_cast<const xmlChar*>(node.name.c_str()));
    if (declared == nullptr) return;
    for (const xmlAttribute* from = declared->attributes; from != nullptr; from = from->nexth) {
      const std::string name = FromXml(from->name);
      if (from->defaultValue == nullptr || node.Attribute(name) != nullptr) continue;
      node.attributes.push_back({name, std::string(), FromXml(from->defaultValue), tag.place});
    }
  }

  /// The place of the attribute in the tag; of the tag when a DOCTYPE brings the attribute.
  static TextPlace PlaceOf(const std::string& name, const XmlTag& tag) {
    for (std::size_t i = 0; i < tag.names.size(); ++i) {
      const std::string_view written = tag.names[i];
      const std::size_t prefix = written.find(':');
      const bool isDeclaration = written == "xmlns" || written.substr(0, 6) == "xmlns:";
      if (!isDeclaration &&
          written.substr(prefix == std::string_view::npos ? 0 : prefix + 1) == name) {
        return tag.attributes[i];
      }
    }
    return tag.place;
  }

  const xmlDoc* m_document;
  const XmlTags m_tags;
  std::size_t m_next = 0;  // of the elements
  std::vector<TooLongText> m_tooLong;
};

/// The part of `path` before its first "/", which is removed with it.
std::string_view TakeStep(std::string_view& path) {
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string_view step = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return step;
}

void SelectInto(const XmlNode& node, std::string_view path, std::vector<const XmlNode*>& found) {
  const std::string_view step = TakeStep(path);
  for (const XmlNode& child : node.children) {
    if (child.name != step || !child.space.empty()) continue;
    if (path.empty()) {
      found.push_back(&child);
    } else {
      SelectInto(child, path, found);
    }
  }
}

}  // namespace

const XmlAttribute* XmlNode::Attribute(std::string_view attribute) const {
  const auto found = std::find_if(attributes.begin(), attributes.end(),
                                  [&](const XmlAttribute& one) { return one.name == attribute; });
  return found == attributes.end() ? nullptr : &*found;
}

const std::string& XmlNode::Value(std::string_view attribute) const {
  static const std::string none;
  const XmlAttribute* found = Attribute(attribute);
  return found == nullptr ? none : found->value;
}

XmlTree ParseXmlTree(const std::string& text) {
  XmlTree tree;
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    tree.problem = "too large for the parser";
    return tree;
  }
  const XmlMessages messages;
  const std::unique_ptr<xmlDoc, FreeDocument> document(xmlReadMemory(
      text.data(), static_cast<int>(text.size()), nullptr, "UTF-8", XML_PARSE_NOBLANKS));
  messages.ThrowIfOutOfMemory();
  if (document) tree = TreeCopy(document.get(), text).Copy();
  tree.encoding = DeclaredEncoding(text);
  if (document) return tree;
  tree.problem = messages.First().empty() ? "the parser gives no reason" : messages.First();
  tree.problemPlace = {messages.Line(), messages.Column()};
  return tree;
}

std::vector<const XmlNode*> Select(const XmlNode& node, std::string_view path) {
  std::vector<const XmlNode*> found;
  SelectInto(node, path, found);
  return found;
}

const std::string& TextAt(const XmlNode& node, std::string_view path) {
  static const std::string none;
  const std::vector<const XmlNode*> found = Select(node, path);
  return found.empty() ? none : found.front()->text;
}

std::vector<ListEntry> SelectList(const XmlNode& node, std::string_view path) {
  const std::size_t slash = path.rfind('/');
  const std::string_view element = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
  std::vector<const XmlNode*> sections = {&node};
  if (slash != std::string_view::npos) sections = Select(node, path.substr(0, slash));

  std::vector<ListEntry> entries;
  std::size_t count = 0;
  std::vector<const XmlNode*> filled;  // sections with at least one entry
  for (const XmlNode* section : sections) {
    const std::vector<const XmlNode*> here = Select(*section, element);
    if (!here.empty()) filled.push_back(section);
    count += here.size();
    // A later section contributes what lies beyond the positions of the earlier ones.
    for (std::size_t i = entries.size(); i < here.size(); ++i) {
      entries.push_back({here[i], section});
    }
  }
  while (entries.size() < count) entries.push_back({nullptr, filled[1]});
  return entries;
}
