#include "src/private/XmlProto.h"

#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlstring.h>
#include <libxml/xpath.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "sdk/os/os.h"
#include "sdk/xrt/lock.h"
#include "sdk/xrt/runtime.h"

namespace TevModelParse {

namespace {

struct FreeXmlText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, FreeXmlText>;

struct FreeMatches {
  void operator()(xmlXPathObject* matches) const { xmlXPathFreeObject(matches); }
};
using Matches = std::unique_ptr<xmlXPathObject, FreeMatches>;

struct FreeContext {
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Receives libxml2's messages on this thread while one of its calls runs.
///
/// libxml2 returns null for "absent" and for "out of memory"; only this callback tells them apart,
/// and a product must not read as empty because memory ran out. Any other message goes on to where
/// libxml2's messages go, by default standard error, as "file:line: message".
class XmlErrors {
 public:
  explicit XmlErrors(const std::string& file)
      : m_file(file), m_handler(xmlStructuredError), m_context(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(this, &XmlErrors::Receive);
  }
  ~XmlErrors() { xmlSetStructuredErrorFunc(m_context, m_handler); }
  XmlErrors(const XmlErrors&) = delete;
  XmlErrors& operator=(const XmlErrors&) = delete;

  /// Throws std::bad_alloc when libxml2 has run out of memory since the construction.
  void ThrowIfOutOfMemory() const {
    if (m_outOfMemory) throw std::bad_alloc();
  }

  /// Sends `sentence` on `node` where libxml2's messages go.
  void Report(const xmlNode& node, const std::string& sentence) const {
    const std::string message = sentence + "\n";
    const int line = LineOf(node);
    if (m_handler != nullptr) {
      xmlError error = {};
      error.domain = XML_FROM_TREE;
      error.code = XML_ERR_INTERNAL_ERROR;
      error.level = XML_ERR_ERROR;
      error.file = const_cast<char*>(m_file.c_str());
      error.line = line;
      error.message = const_cast<char*>(message.c_str());
      m_handler(m_context, &error);
      return;
    }
    const std::string place = line == 0 ? m_file : m_file + ":" + std::to_string(line);
    xmlGenericError(xmlGenericErrorContext, "%s: %s", place.c_str(), message.c_str());
  }

 private:
  /// 0 when it is not known: elements alone have one, and it is counted in 16 bits.
  static int LineOf(const xmlNode& node) {
    const bool known = node.type == XML_ELEMENT_NODE &&
                       node.line != std::numeric_limits<decltype(node.line)>::max();
    return known ? node.line : 0;
  }

  // A template because the error is const from libxml2 2.12 on.
  template <typename Error>
  static void Receive(void* self, Error* error) {
    auto& errors = *static_cast<XmlErrors*>(self);
    if (error->code == XML_ERR_NO_MEMORY) {
      errors.m_outOfMemory = true;
    } else if (errors.m_handler != nullptr) {
      errors.m_handler(errors.m_context, error);
    } else {
      xmlGenericError(xmlGenericErrorContext, "%s:%d: %s", errors.m_file.c_str(), error->line,
                      error->message);
    }
  }

  const std::string& m_file;
  const xmlStructuredErrorFunc m_handler;  // the host's
  void* const m_context;
  bool m_outOfMemory = false;
};

const xmlChar* XmlString(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

/// The first matching node in document order, or null.
xmlNode* FirstNode(const xmlXPathObject* matches) {
  if (matches == nullptr || matches->nodesetval == nullptr) return nullptr;
  const xmlNodeSet& nodes = *matches->nodesetval;
  return nodes.nodeNr > 0 && nodes.nodeTab != nullptr ? nodes.nodeTab[0] : nullptr;
}

/// Whether libxml2 may put the text of a node list together: whether it stays short and quick.
///
/// A file of some kilobytes can mean a text of gigabytes by naming one long entity again and again.
/// And to append a piece, libxml2 first goes through the text so far. The steps count that cost:
/// for each piece, of an entity's text as well, the bytes of the text so far and of the piece; and
/// for each node a fixed number for finding it and allocating.
class TextBounds {
 public:
  enum Result { kHeld, kTooLong, kTooManyPieces };

  explicit TextBounds(const xmlDoc* document) : m_document(document) {}

  Result Check(const xmlNode* list) {
    std::size_t bytes = 0;
    return Add(list, 0, bytes);
  }

 private:
  /// Adds the bytes of the text of `list` to `bytes`.
  Result Add(const xmlNode* list, int depth, std::size_t& bytes) {
    for (const xmlNode* node = list; node != nullptr; node = node->next) {
      std::size_t piece = 0;
      if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
        piece = static_cast<std::size_t>(xmlStrlen(node->content));
      } else if (node->type == XML_ENTITY_REF_NODE) {
        if (depth == kMostDepth) return kTooManyPieces;
        const xmlEntity* entity = xmlGetDocEntity(m_document, node->name);
        const xmlNode* children = entity == nullptr ? nullptr : entity->children;
        const Result result = Add(children, depth + 1, piece);
        if (result != kHeld) return result;
      }
      m_steps += kStepsOfANode + (piece == 0 ? 0 : bytes + piece);
      bytes += piece;
      if (bytes > kMostBytes) return kTooLong;
      if (m_steps > kMostSteps) return kTooManyPieces;
    }
    return kHeld;
  }

  static constexpr std::size_t kMostBytes = 10'000'000;  // libxml2's own limit for one text
  static constexpr int kMostDepth = 40;

  // Measured with libxml2 2.9.14: 18 to 87 thousand million steps a second on Linux, the longer the
  // text the fewer, so at most about half a second for one text; one thousand million under Wine,
  // whose strlen goes byte by byte. A node takes up to 100 ns.
  static constexpr std::size_t kMostSteps = 10'000'000'000;
  static constexpr std::size_t kStepsOfANode = 1000;

  const xmlDoc* m_document;
  std::size_t m_steps = 0;
};

/// Whether the text of `list` may be asked for. If not, reports `what` of `node` as absent.
bool WithinBounds(const xmlDoc* document, const xmlNode* list, const XmlErrors& errors,
                  const xmlNode& node, const std::string& what) {
  const TextBounds::Result result = TextBounds(document).Check(list);
  if (result == TextBounds::kHeld) return true;
  errors.Report(node,
                what + " of <" + reinterpret_cast<const char*>(node.name) + "> is " +
                    (result == TextBounds::kTooLong ? "longer than 10000000 bytes"
                                                    : "of too many pieces to be put together") +
                    ": it reads as absent");
  return false;
}

bool IsBlank(const char* text) {
  return text[std::strspn(text, " \t\r\n")] == '\0';
}

/// Never null.
xmlDoc* NewEmptyDocument() {
  xmlDoc* document = xmlNewDoc(XmlString("1.0"));
  if (document == nullptr) throw std::bad_alloc();
  return document;
}

/// The nodes of `document`, the content of `file`, that match `expression`.
Matches Evaluate(xmlDoc* document, const std::string& file, const std::string& expression) {
  const XmlErrors errors(file);
  const std::unique_ptr<xmlXPathContext, FreeContext> context(xmlXPathNewContext(document));
  if (!context) throw std::bad_alloc();
  Matches matches(xmlXPathEvalExpression(XmlString(expression), context.get()));
  errors.ThrowIfOutOfMemory();
  return matches;
}

constexpr char kSeparators[] = "/\\";

/// Reads `path` into `content`; false when it is missing, empty, or no file that can be read.
bool ReadFile(std::string& content, const std::string& path) {
  std::FILE* opened = nullptr;
  if (fopen_s(&opened, path.c_str(), "rb") != 0) return false;
  const std::unique_ptr<std::FILE, CloseFile> file(opened);
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return false;
  const long size = std::ftell(file.get());
  if (size <= 0 || size > std::numeric_limits<std::int32_t>::max()) return false;
  if (std::fseek(file.get(), 0, SEEK_SET) != 0) return false;

  std::string bytes(static_cast<std::size_t>(size), '\0');
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
  if (bytes.empty() && std::ferror(file.get())) return false;

  const std::size_t last = bytes.find_last_not_of('\n');
  if (last != std::string::npos) bytes.resize(last + 1);
  content = std::move(bytes);
  return true;
}

/// The path beside `path` with its last extension replaced by ".data"; empty without a directory.
std::string FallbackPath(const std::string& path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  if (separator == std::string::npos) return std::string();
  const std::string name = path.substr(separator + 1);
  return path.substr(0, separator) + "/" + name.substr(0, name.rfind('.')) + ".data";
}

/// Reads `path`; when that cannot be read, `alternative`, or without one the file that stands in
/// for `path`. Returns the path of the file that was read; empty for none.
std::string ReadFirstReadable(std::string& content, const std::string& path,
                              const std::string& alternative) {
  if (ReadFile(content, path)) return path;
  const std::string second = alternative.empty() ? FallbackPath(path) : alternative;
  return !second.empty() && ReadFile(content, second) ? second : std::string();
}

}  // namespace

void CXmlProto::FreeDocument::operator()(xmlDoc* document) const {
  xmlFreeDoc(document);
}

CXmlProto::CXmlProto() : m_document(NewEmptyDocument()) {}

CXmlProto::~CXmlProto() = default;

bool CXmlProto::ParseMemory(const std::string& text, const std::string& name) {
  m_name = name;
  m_document.reset(NewEmptyDocument());  // what every failure below leaves
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return false;
  const XmlErrors errors(m_name);
  std::unique_ptr<xmlDoc, FreeDocument> document(xmlReadMemory(
      text.data(), static_cast<int>(text.size()), nullptr, "UTF-8", XML_PARSE_NOBLANKS));
  errors.ThrowIfOutOfMemory();
  if (!document) return false;
  m_document = std::move(document);
  return true;
}

std::int32_t CXmlProto::GetNodeCount(const std::string& expression) const {
  const Matches matches = Evaluate(m_document.get(), m_name, expression);
  return FirstNode(matches.get()) == nullptr ? 0 : matches->nodesetval->nodeNr;
}

std::string CXmlProto::GetNodeText(const std::string& expression,
                                   const std::string& fallback) const {
  const Matches matches = Evaluate(m_document.get(), m_name, expression);
  const xmlNode* node = FirstNode(matches.get());
  if (node == nullptr) return fallback;
  const XmlErrors errors(m_name);
  if (!WithinBounds(m_document.get(), node->children, errors, *node, "the text")) return fallback;
  const XmlText text(xmlNodeListGetString(m_document.get(), node->children, 1));
  errors.ThrowIfOutOfMemory();
  const char* bytes = reinterpret_cast<const char*>(text.get());
  return bytes == nullptr || IsBlank(bytes) ? fallback : bytes;
}

std::int32_t CXmlProto::GetNodeInt(const std::string& expression, std::int32_t fallback) const {
  const std::string text = GetNodeText(expression, "");
  return text.empty() ? fallback : std::atoi(text.c_str());
}

std::string CXmlProto::GetNodeProp(const std::string& expression, const std::string& attribute,
                                   const std::string& fallback) const {
  const Matches matches = Evaluate(m_document.get(), m_name, expression);
  const xmlNode* node = FirstNode(matches.get());
  const xmlAttr* property = node == nullptr ? nullptr : xmlHasProp(node, XmlString(attribute));
  if (property == nullptr) return fallback;
  const XmlErrors errors(m_name);
  if (!WithinBounds(m_document.get(), property->children, errors, *node,
                    "the attribute " + attribute)) {
    return fallback;
  }
  const XmlText value(xmlGetProp(node, XmlString(attribute)));
  errors.ThrowIfOutOfMemory();
  return value ? reinterpret_cast<const char*>(value.get()) : fallback;
}

bool ReadWholeFile(std::string& content, const std::string& path, const std::string& alternative) {
  return !ReadFirstReadable(content, path, alternative).empty();
}

std::string GetExeDirectory() {
  static std::string directory;
  static XRT_Mutex mutex;
  XRT_Guard guard(&mutex);
  if (directory.empty()) {
    char path[1040] = {};
    XRT_GetCurExePath(path, static_cast<std::int32_t>(sizeof(path)));
    directory.assign(path, std::find(path, path + sizeof(path), '\0'));
    directory.resize(directory.find_last_of(kSeparators) + 1);
  }
  std::replace(directory.begin(), directory.end(), '\\', '/');
  return directory;
}

std::shared_ptr<CXmlProto> ReadDocument(const std::string& path) {
  std::string content;
  const std::string file = ReadFirstReadable(content, path, "");
  if (file.empty()) return nullptr;
  auto document = std::make_shared<CXmlProto>();
  document->ParseMemory(content, file);
  return document;
}

}  // namespace TevModelParse
