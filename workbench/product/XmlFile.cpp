#include "workbench/product/XmlFile.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

namespace {

struct FreeContext {
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
};

const xmlChar* XmlString(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string FromXml(const xmlChar* text) {
  return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

/// `message` without trailing whitespace, and with blanks for line breaks and tabs.
std::string OneLine(std::string message) {
  const std::size_t last = message.find_last_not_of(" \t\r\n");
  message.resize(last == std::string::npos ? 0 : last + 1);
  for (char& c : message) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  return message;
}

/// Receives libxml2's messages on this thread while it exists, and keeps the first fatal one, which
/// says why a document is not well-formed.
class XmlMessages {
 public:
  XmlMessages() : m_handler(xmlStructuredError), m_context(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, &XmlMessages::OnMessage);
  }
  ~XmlMessages() { xmlSetStructuredErrorFunc(m_context, m_handler); }
  XmlMessages(const XmlMessages&) = delete;
  XmlMessages& operator=(const XmlMessages&) = delete;

  /// libxml2 returns null for "not well-formed" and for "out of memory".
  void ThrowIfOutOfMemory() const {
    if (m_outOfMemory) throw std::bad_alloc();
  }

  const std::string& First() const { return m_first; }
  int Line() const { return m_line; }

 private:
  // A template because the error is const from libxml2 2.12 on.
  template <typename Error>
  static void OnMessage(void* self, Error* error) noexcept {
    auto& messages = *static_cast<XmlMessages*>(self);
    if (error->code == XML_ERR_NO_MEMORY) messages.m_outOfMemory = true;
    if (error->level != XML_ERR_FATAL || !messages.m_first.empty()) return;
    try {
      messages.m_first = OneLine(error->message == nullptr ? "" : error->message);
      messages.m_line = error->line;
    } catch (const std::bad_alloc&) {  // no exception may pass through libxml2's C code
      messages.m_outOfMemory = true;
    }
  }

  const xmlStructuredErrorFunc m_handler;  // the previous one, which is restored
  void* const m_context;
  std::string m_first;
  int m_line = 0;
  bool m_outOfMemory = false;
};

/// Concatenates the texts of a node list, with entities replaced, up to a limit: a small file can
/// expand to gigabytes by naming one long entity again and again.
class TextPieces {
 public:
  explicit TextPieces(const xmlDoc* document) : m_document(document) {}

  /// False when the limit is exceeded. Recurses as deep as entities nest, which libxml2 limits
  /// to 40.
  bool Append(const xmlNode* list) {
    for (const xmlNode* node = list; node != nullptr; node = node->next) {
      if (++m_nodes > kMostNodes) return false;
      if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
        m_text += FromXml(node->content);
      } else if (node->type == XML_ENTITY_REF_NODE) {
        const xmlEntity* entity = xmlGetDocEntity(m_document, node->name);
        if (entity != nullptr && !Append(entity->children)) return false;
      }
      if (m_text.size() > kMostBytes) return false;
    }
    return true;
  }

  const std::string& Text() const { return m_text; }

 private:
  static constexpr std::size_t kMostBytes = 10'000'000;  // the same limit as in the frame
  static constexpr std::size_t kMostNodes = 10'000'000;

  const xmlDoc* m_document;
  std::string m_text;
  std::size_t m_nodes = 0;
};

const xmlNode* FirstNode(const xmlXPathObject* matches) {
  if (matches == nullptr || matches->nodesetval == nullptr) return nullptr;
  const xmlNodeSet& nodes = *matches->nodesetval;
  return nodes.nodeNr > 0 && nodes.nodeTab != nullptr ? nodes.nodeTab[0] : nullptr;
}

}  // namespace

XmlFile::XmlFile(const std::string& text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    m_problem = "too large";
    return;
  }
  const XmlMessages messages;
  m_document.reset(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                                 XML_PARSE_NOBLANKS));
  messages.ThrowIfOutOfMemory();
  if (m_document) return;
  m_problem = messages.First().empty() ? "the parser gives no reason" : messages.First();
  m_problemLine = messages.Line();
}

XmlFile::Root XmlFile::RootElement() const {
  const xmlNode* node = m_document ? xmlDocGetRootElement(m_document.get()) : nullptr;
  if (node == nullptr) return Root();
  return {FromXml(node->name), node->ns == nullptr ? std::string() : FromXml(node->ns->href),
          static_cast<int>(xmlGetLineNo(node))};
}

XmlFile::Matches XmlFile::Evaluate(const std::string& expression) const {
  if (!m_document) return nullptr;
  const XmlMessages messages;
  const std::unique_ptr<xmlXPathContext, FreeContext> context(xmlXPathNewContext(m_document.get()));
  if (!context) throw std::bad_alloc();
  Matches matches(xmlXPathEvalExpression(XmlString(expression), context.get()));
  messages.ThrowIfOutOfMemory();
  return matches;
}

int XmlFile::Count(const std::string& expression) const {
  const Matches matches = Evaluate(expression);
  return FirstNode(matches.get()) == nullptr ? 0 : matches->nodesetval->nodeNr;
}

std::string XmlFile::TextOf(const xmlNode* list, const std::string& fallback) const {
  TextPieces pieces(m_document.get());
  return pieces.Append(list) ? pieces.Text() : fallback;
}

std::string XmlFile::Text(const std::string& expression, const std::string& fallback) const {
  const Matches matches = Evaluate(expression);
  const xmlNode* node = FirstNode(matches.get());
  if (node == nullptr) return fallback;
  std::string text = TextOf(node->children, fallback);
  return text.find_first_not_of(" \t\r\n") == std::string::npos ? fallback : text;
}

std::string XmlFile::Attribute(const std::string& expression, const std::string& name,
                               const std::string& fallback) const {
  const Matches matches = Evaluate(expression);
  const xmlNode* node = FirstNode(matches.get());
  const xmlAttr* attribute = node == nullptr ? nullptr : xmlHasProp(node, XmlString(name));
  if (attribute == nullptr) return fallback;
  if (attribute->type == XML_ATTRIBUTE_DECL) {  // absent; the file's DOCTYPE declares a default
    return FromXml(reinterpret_cast<const xmlAttribute*>(attribute)->defaultValue);
  }
  return TextOf(attribute->children, fallback);
}

int XmlFile::Line(const std::string& expression) const {
  const Matches matches = Evaluate(expression);
  const xmlNode* node = FirstNode(matches.get());
  return node == nullptr ? 0 : static_cast<int>(xmlGetLineNo(node));
}

std::vector<XmlListElement> ListElements(const XmlFile& file, const std::string& section,
                                         const std::string& element) {
  const std::string list = section + "/" + element;
  const std::string secondSection = section + "[" + element + "][2]";
  const int count = file.Count(list);
  std::vector<XmlListElement> elements;
  for (int position = 1; position <= count; ++position) {
    XmlListElement found;
    found.path = list;
    found.path += "[" + std::to_string(position) + "]";
    found.hidden = file.Count(found.path) == 0;
    found.line = file.Line(found.hidden ? secondSection : found.path);
    elements.push_back(std::move(found));
  }
  return elements;
}
