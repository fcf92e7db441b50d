#include "workbench/check/SchemaCheck.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>
#include <libxml/xmlschemastypes.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "workbench/check/SchemaTexts.h"
#include "workbench/check/SchemaWords.h"
#include "workbench/product/XmlMessages.h"

namespace {

template <auto function>
struct FreeBy {
  template <typename T>
  void operator()(T* object) const {
    function(object);
  }
};

using Document = std::unique_ptr<xmlDoc, FreeBy<&xmlFreeDoc>>;
using Schema = std::unique_ptr<xmlSchema, FreeBy<&xmlSchemaFree>>;
using SchemaParser = std::unique_ptr<xmlSchemaParserCtxt, FreeBy<&xmlSchemaFreeParserCtxt>>;
using Validator = std::unique_ptr<xmlSchemaValidCtxt, FreeBy<&xmlSchemaFreeValidCtxt>>;

/// libxml2 returns null here only when memory has run out.
template <typename T>
T* NotNull(T* object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

const xmlChar* XmlString(const std::string& text) {
  return reinterpret_cast<const xmlChar*>(text.c_str());
}

std::string SchemaText(std::string_view schema) {
  std::string text;
  for (std::size_t i = 0; i < kSchemaPieces.count; ++i) {
    if (kSchemaPieces.first[i].schema == schema) text += kSchemaPieces.first[i].text;
  }
  return text;
}

/// The text of a schema with the shared types in the place of their inclusion, so that no file is
/// read.
std::string WholeSchemaText(std::string_view schema) {
  std::string types = SchemaText("Types");
  types.erase(types.rfind("</xs:schema>"));
  types.erase(0, types.find('>', types.find("<xs:schema")) + 1);
  const std::string_view include = R"(<xs:include schemaLocation="Types.xsd"/>)";
  std::string text = SchemaText(schema);
  return text.replace(text.find(include), include.size(), types);
}

Schema Compile(std::string_view schema) {
  const std::string text = WholeSchemaText(schema);
  const XmlMessages messages;
  const SchemaParser parser(
      NotNull(xmlSchemaNewMemParserCtxt(text.data(), static_cast<int>(text.size()))));
  Schema compiled(xmlSchemaParse(parser.get()));
  messages.ThrowIfOutOfMemory();
  return compiled;
}

const char* SchemaName(FileKind kind) {
  static constexpr std::array<const char*, 10> names = {
      "Product",           "DeviceDrivers", "Portal",       "Platform",         "Plugin",
      "InstalledProducts", "ProductAddons", "ProductTools", "AddonDescription", "ToolDescription"};
  return names[static_cast<std::size_t>(kind)];
}

/// Guards the compiled schemas and their use: libxml2 does not promise that threads may share one.
std::mutex& SchemaMutex() {
  static std::mutex mutex;
  return mutex;
}

/// The compiled schema. SchemaMutex must be held. The schemas are never destroyed: libxml2 may have
/// ended before static objects are.
xmlSchema* CompiledSchema(FileKind kind) {
  static auto& schemas = *new std::array<Schema, 10>;
  Schema& schema = schemas[static_cast<std::size_t>(kind)];
  if (!schema) schema = Compile(SchemaName(kind));
  return schema.get();
}

/// A document of libxml2 with what the frame reads of a tree: no comments, no entities, no parts of
/// texts, no xml:lang. Each of its elements leads to its SchemaNode.
class TreeDocument {
 public:
  TreeDocument(FileKind kind, const XmlTree& tree)
      : m_document(NotNull(xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0")))) {
    const SchemaNode root = {&tree.root, nullptr, &Grammar(kind)};
    xmlDocSetRootElement(m_document.get(), Copy(root));
  }

  xmlDoc* Get() const { return m_document.get(); }

 private:
  using Node = std::unique_ptr<xmlNode, FreeBy<&xmlFreeNode>>;

  /// Recurses as deep as the tree, which the parser limits to 256 levels.
  xmlNode* Copy(const SchemaNode& from) {
    const XmlNode& node = *from.node;
    Node copy(NotNull(xmlNewDocNode(m_document.get(), nullptr, XmlString(node.name), nullptr)));
    copy->_private = &m_nodes.emplace_back(from);
    const SchemaNode& self = m_nodes.back();
    if (!node.space.empty()) xmlSetNs(copy.get(), Space(*copy, node.space));
    for (const XmlAttribute& attribute : node.attributes) {
      if (!IsOfXml(attribute, self.spec)) Copy(attribute, *copy);
    }
    if (!node.text.empty()) {
      Add(*copy, Node(NotNull(xmlNewDocText(m_document.get(), XmlString(node.text)))));
    }
    for (const XmlNode& child : node.children) {
      const bool isKnown = self.spec != nullptr && child.space.empty();
      Add(*copy, Node(Copy({&child, &self, isKnown ? self.spec->Child(child.name) : nullptr})));
    }
    return copy.release();
  }

  /// Whether it is xml:lang or the like, which any element of any file may have.
  static bool IsOfXml(const XmlAttribute& attribute, const ElementSpec* spec) {
    const bool isKnown = spec != nullptr && spec->Attribute(attribute.name) != nullptr;
    return !isKnown && attribute.space == "http://www.w3.org/XML/1998/namespace";
  }

  void Copy(const XmlAttribute& attribute, xmlNode& to) {
    xmlNs* space = attribute.space.empty() ? nullptr : Space(to, attribute.space);
    xmlAttr* copy =
        NotNull(xmlNewNsProp(&to, space, XmlString(attribute.name), XmlString(attribute.value)));
    copy->_private = const_cast<XmlAttribute*>(&attribute);
  }

  static void Add(xmlNode& parent, Node child) {
    NotNull(xmlAddChild(&parent, child.get()));
    static_cast<void>(child.release());  // the parent owns it
  }

  xmlNs* Space(xmlNode& node, const std::string& name) {
    const std::string prefix = "n" + std::to_string(++m_spaces);
    return NotNull(xmlNewNs(&node, XmlString(name), XmlString(prefix)));
  }

  Document m_document;
  std::deque<SchemaNode> m_nodes;
  std::size_t m_spaces = 0;
};

/// What libxml2 says of one place.
struct Fault {
  SchemaFault what = SchemaFault::kOther;
  xmlNode* element = nullptr;
  const XmlAttribute* attribute = nullptr;

  const SchemaNode& At() const { return *static_cast<const SchemaNode*>(element->_private); }
};

SchemaFault FaultOf(int code, std::string_view message) {
  switch (code) {
    case XML_SCHEMAV_ELEMENT_CONTENT:
      return message.find(": Missing child element(s).") == std::string_view::npos
                 ? SchemaFault::kElement
                 : SchemaFault::kMissingElement;
    case XML_SCHEMAV_CVC_ELT_1:
      return SchemaFault::kElement;
    case XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_1:
    case XML_SCHEMAV_CVC_COMPLEX_TYPE_3_2_2:
    case XML_SCHEMAV_CVC_TYPE_3_1_1:
      return SchemaFault::kAttribute;
    case XML_SCHEMAV_CVC_COMPLEX_TYPE_4:
      return SchemaFault::kMissingAttribute;
    case XML_SCHEMAV_CVC_COMPLEX_TYPE_2_1:
    case XML_SCHEMAV_CVC_COMPLEX_TYPE_2_3:
      return SchemaFault::kText;
    case XML_SCHEMAV_CVC_TYPE_3_1_2:
    case XML_SCHEMAV_CVC_COMPLEX_TYPE_2_2:
      return SchemaFault::kElementInText;
    case XML_SCHEMAV_CVC_IDC:
      return SchemaFault::kTwice;
    default:
      break;
  }
  const bool isValue =
      (code >= XML_SCHEMAV_CVC_DATATYPE_VALID_1_2_1 &&
       code <= XML_SCHEMAV_CVC_DATATYPE_VALID_1_2_3) ||
      (code >= XML_SCHEMAV_CVC_FACET_VALID && code <= XML_SCHEMAV_CVC_ENUMERATION_VALID);
  return isValue ? SchemaFault::kValue : SchemaFault::kOther;
}

/// The attribute that a message is about: "Element 'Plugin', attribute '{urn:x}ID': ..."; null for
/// none. libxml2 gives its name nowhere else.
const XmlAttribute* AttributeIn(std::string_view message, const XmlNode& node) {
  constexpr std::string_view before = "', attribute '";
  const std::size_t begin = message.find('\'', message.find('\'') + 1);
  if (begin == std::string_view::npos || message.substr(begin, before.size()) != before) {
    return nullptr;
  }
  const std::string_view rest = message.substr(begin + before.size());
  const auto isNamed = [&](const XmlAttribute& attribute) {
    const std::string space = attribute.space.empty() ? std::string() : "{" + attribute.space + "}";
    const std::string name = space + attribute.name + "'";
    return rest.substr(0, name.size()) == name;
  };
  const auto found = std::find_if(node.attributes.begin(), node.attributes.end(), isNamed);
  return found == node.attributes.end() ? nullptr : &*found;
}

/// Whether libxml2 only says that an ID cannot be compared with others, because it is wrong.
bool IsNoVerdict(int code, std::string_view message) {
  return code == XML_SCHEMAV_CVC_IDC &&
         message.find("Duplicate key-sequence") == std::string_view::npos;
}

/// Receives what the validation of one document says.
class FaultList {
 public:
  explicit FaultList(xmlSchemaValidCtxt& validator) {
    xmlSchemaSetValidStructuredErrors(&validator, &FaultList::Receive, this);
  }

  /// Throws std::bad_alloc when memory has run out since the construction.
  const std::vector<Fault>& Faults() const {
    if (m_outOfMemory) throw std::bad_alloc();
    return m_faults;
  }

 private:
  // A template because the error is const from libxml2 2.12 on.
  template <typename Error>
  static void Receive(void* self, Error* error) noexcept {
    static_cast<FaultList*>(self)->Keep(error->code, error->message,
                                        static_cast<xmlNode*>(error->node));
  }

  void Keep(int code, const char* message, xmlNode* node) noexcept {
    if (code == XML_ERR_NO_MEMORY) m_outOfMemory = true;
    if (node != nullptr && node->type == XML_ATTRIBUTE_NODE) node = node->parent;
    if (node == nullptr || node->type != XML_ELEMENT_NODE || message == nullptr) return;
    if (IsNoVerdict(code, message)) return;
    try {
      Fault fault = {FaultOf(code, message), node, nullptr};
      fault.attribute = AttributeIn(message, *fault.At().node);
      m_faults.push_back(fault);
    } catch (const std::bad_alloc&) {  // no exception may pass through libxml2's C code
      m_outOfMemory = true;
    }
  }

  std::vector<Fault> m_faults;
  bool m_outOfMemory = false;
};

std::vector<Fault> Validate(xmlSchema* schema, xmlDoc* document) {
  const XmlMessages messages;
  const Validator validator(NotNull(xmlSchemaNewValidCtxt(schema)));
  const FaultList faults(*validator);
  xmlSchemaValidateDoc(validator.get(), document);
  messages.ThrowIfOutOfMemory();
  return faults.Faults();
}

/// Keeps each place once: a value has one fault for each facet and one for its type.
class Errors {
 public:
  explicit Errors(FileKind kind) : m_kind(kind) {}

  void Add(const Fault& fault) {
    const SchemaNode& at = fault.At();
    const void* place = at.node;
    if (fault.attribute != nullptr) place = fault.attribute;
    if (!m_known.insert({place, fault.what}).second) return;
    SchemaError error;
    error.node = at.node;
    error.place = PlaceOf(fault);
    if (fault.attribute != nullptr) error.attribute = fault.attribute->name;
    error.message = SchemaSentence(m_kind, fault.what, at, fault.attribute);
    error.effect = SchemaEffect(m_kind, fault.what, at, fault.attribute);
    error.isUnknownName = IsUnknownName(fault);
    m_errors.push_back(std::move(error));
  }

  std::vector<SchemaError> Sorted() && {
    const auto place = [](const SchemaError& error) {
      return std::tie(error.place.line, error.place.column);
    };
    std::stable_sort(
        m_errors.begin(), m_errors.end(),
        [&](const SchemaError& a, const SchemaError& b) { return place(a) < place(b); });
    return std::move(m_errors);
  }

 private:
  static TextPlace PlaceOf(const Fault& fault) {
    const XmlNode& node = *fault.At().node;
    if (fault.attribute != nullptr) return fault.attribute->place;
    if (fault.what == SchemaFault::kText && node.textPlace.line != 0) return node.textPlace;
    return fault.what == SchemaFault::kTwice ? PlaceOfID(node) : node.place;
  }

  static bool IsUnknownName(const Fault& fault) {
    const SchemaNode& at = fault.At();
    const bool isElement = fault.what == SchemaFault::kElement;
    if (isElement) return at.spec == nullptr && at.node->space.empty();
    return fault.what == SchemaFault::kAttribute && fault.attribute != nullptr &&
           fault.attribute->space.empty();
  }

  static TextPlace PlaceOfID(const XmlNode& node) {
    if (const XmlAttribute* id = node.Attribute("ID")) return id->place;
    for (const char* element : {"ID", "ProductLogo"}) {
      const std::vector<const XmlNode*> found = Select(node, element);
      if (!found.empty()) return found.front()->place;
    }
    return node.place;
  }

  const FileKind m_kind;
  std::set<std::pair<const void*, SchemaFault>> m_known;
  std::vector<SchemaError> m_errors;
};

/// Whether an attribute is missing only because it has a prefix, which is a fault of its own.
bool HasItWithPrefix(const Fault& fault) {
  const SchemaNode& at = fault.At();
  if (fault.what != SchemaFault::kMissingAttribute || at.spec == nullptr) return false;
  const auto& specs = at.spec->attributes;
  return std::all_of(specs.begin(), specs.end(), [&](const AttributeSpec& spec) {
    return !spec.required || at.node->Attribute(spec.name) != nullptr;
  });
}

void Remove(xmlNode* element) {
  xmlUnlinkNode(element);
  xmlFreeNode(element);
}

}  // namespace

std::vector<SchemaError> ValidateAgainstSchema(FileKind kind, const XmlTree& tree) {
  if (!tree.wellFormed) return {};
  const std::lock_guard<std::mutex> lock(SchemaMutex());
  const TreeDocument document(kind, tree);
  xmlSchema* schema = CompiledSchema(kind);
  Errors errors(kind);
  // libxml2 does not look at what follows an unexpected element in its parent. The element is
  // removed and the rest validated, a limited number of times.
  constexpr int most = 8;
  for (int i = 0; i < most; ++i) {
    bool again = false;
    for (const Fault& fault : Validate(schema, document.Get())) {
      if (!HasItWithPrefix(fault)) errors.Add(fault);
      if (fault.what != SchemaFault::kElement || fault.At().parent == nullptr) continue;
      Remove(fault.element);
      again = true;
    }
    if (!again) break;
  }
  return std::move(errors).Sorted();
}
