#include "workbench/check/SchemaWords.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "workbench/check/NumberText.h"
#include "workbench/check/Words.h"
#include "workbench/output/Text.h"

namespace {

/// Values that are more than a number, a flag or a text.
struct AllowedValue {
  FileKind kind;
  bool isAttribute;
  const char* name;  // of the element or attribute
  const char* allowed;
};

constexpr char kLogos[] = R"("Velmora Lite" or "Velmora Professional")";

constexpr AllowedValue kAllowedValues[] = {
    {FileKind::kProduct, false, "Product", R"("NVT" or "NVX")"},
    {FileKind::kProduct, false, "Version", "at least three parts with dots between them"},
    {FileKind::kPlugin, false, "Type", "1 or 2"},
    {FileKind::kPlugin, true, "Category",
     R"("platform", or another word than that with capitals, without blanks)"},
    {FileKind::kAddon, true, "Category", R"("server", or another word than that with capitals)"},
    {FileKind::kAddon, false, "ProductLogo", kLogos},
    {FileKind::kTool, false, "ProductLogo", kLogos}};

std::string AllowedText(const std::string& value) {
  if (value.empty()) return "a text that is not empty";
  const char* blanks = " \t\r\n";
  const bool blankEnds =
      std::strchr(blanks, value.front()) != nullptr || std::strchr(blanks, value.back()) != nullptr;
  if (blankEnds) return "a text without blanks at its ends";
  if (value.find('\n') != std::string::npos) return "one line";
  return R"(the name of a file: no "/" or "\", no two dots in a row, no dot at the end)";
}

std::string Allowed(FileKind kind, const char* name, bool isAttribute, ValueKind value,
                    const std::string& text) {
  for (const AllowedValue& one : kAllowedValues) {
    const bool same =
        one.kind == kind && one.isAttribute == isAttribute && std::strcmp(one.name, name) == 0;
    if (same) return one.allowed;
  }
  switch (value) {
    case ValueKind::kNumber:
      return "a number";
    case ValueKind::kFlag:
      return "0 or 1";
    case ValueKind::kTrue:
      return R"("true" or "false")";
    case ValueKind::kNone:
    case ValueKind::kText:
    case ValueKind::kId:
    case ValueKind::kVersion:
      break;
  }
  return AllowedText(text);
}

std::string AttributeOf(const std::string& attribute, const SchemaNode& at) {
  return "the attribute " + attribute + " of " + Tag(at.node->name);
}

std::string InNamespace(const std::string& space) {
  return space.empty() ? std::string() : " in the namespace " + QuotedValue(space);
}

/// "; allowed: <a>, <b>"; at most six names.
std::string AllowedNames(const std::vector<std::string>& names, bool areElements) {
  if (names.empty()) return std::string();
  constexpr std::size_t most = 6;
  std::string list;
  for (std::size_t i = 0; i < std::min(names.size(), most); ++i) {
    list += (i == 0 ? "" : ", ") + (areElements ? Tag(names[i]) : names[i]);
  }
  if (names.size() > most) list += " and " + std::to_string(names.size() - most) + " more";
  return "; allowed: " + list;
}

/// The names of the required elements or attributes that are not there.
template <typename Spec, typename Present>
std::vector<std::string> Missing(const TablePart<Spec>& specs, const Present& isPresent) {
  std::vector<std::string> missing;
  for (const Spec& spec : specs) {
    if (spec.required && !isPresent(spec.name)) missing.emplace_back(spec.name);
  }
  return missing;
}

std::string UnexpectedElement(const SchemaNode& at) {
  const std::string name = Tag(at.node->name) + InNamespace(at.node->space);
  if (at.parent == nullptr) return "the root " + name + " is not that of such a file";
  const std::string in = Tag(at.parent->node->name);
  if (at.spec != nullptr) return "a second " + name + " in " + in;
  const ElementSpec* parent = at.parent->spec;
  return name + " is not allowed in " + in +
         (parent == nullptr ? "" : AllowedNames(parent->ChildNames(), true));
}

std::string MissingElements(const SchemaNode& at) {
  const std::string in = " in " + Tag(at.node->name);
  if (at.spec == nullptr) return "an element is missing" + in;
  const auto& children = at.node->children;
  std::vector<std::string> missing = Missing(at.spec->children, [&](const char* name) {
    return std::any_of(children.begin(), children.end(),
                       [&](const XmlNode& child) { return child.name == name; });
  });
  if (missing.empty()) missing = at.spec->ChildNames();  // one at least of a list
  std::string list;
  for (const std::string& name : missing) list += (list.empty() ? "" : " and ") + Tag(name);
  return list + (missing.size() == 1 ? " is missing" : " are missing") + in;
}

std::string MissingAttributes(const SchemaNode& at) {
  const std::string in = " in " + Tag(at.node->name);
  if (at.spec == nullptr) return "an attribute is missing" + in;
  const auto& attributes = at.node->attributes;
  const std::vector<std::string> missing = Missing(at.spec->attributes, [&](const char* name) {
    return std::any_of(attributes.begin(), attributes.end(), [&](const XmlAttribute& one) {
      return one.name == name && one.space.empty();
    });
  });
  std::string list;
  for (const std::string& name : missing) list += (list.empty() ? "" : " and ") + name;
  return "the " + std::string(missing.size() == 1 ? "attribute " : "attributes ") + list +
         (missing.size() == 1 ? " is missing" : " are missing") + in;
}

std::string WrongValue(FileKind kind, const SchemaNode& at, const XmlAttribute* attribute) {
  if (at.spec == nullptr) return Tag(at.node->name) + " has a value that is not allowed";
  if (attribute == nullptr) {
    const std::string& text = at.node->text;
    return Tag(at.node->name) + (text.empty() ? " is empty" : " is " + QuotedValue(text)) +
           "; allowed: " + Allowed(kind, at.spec->name, false, at.spec->value, text);
  }
  const AttributeSpec* spec = at.spec->Attribute(attribute->name);
  const std::string& text = attribute->value;
  return AttributeOf(attribute->name, at) +
         (text.empty() ? " is empty" : " is " + QuotedValue(text)) + "; allowed: " +
         Allowed(kind, attribute->name.c_str(), true,
                 spec == nullptr ? ValueKind::kText : spec->value, text);
}

std::string UnexpectedAttribute(const SchemaNode& at, const XmlAttribute* attribute) {
  if (attribute == nullptr) return Tag(at.node->name) + " has an attribute that is not allowed";
  return AttributeOf(attribute->name, at) + InNamespace(attribute->space) + " is not allowed" +
         (at.spec == nullptr ? "" : AllowedNames(at.spec->AttributeNames(), false));
}

std::string ListedTwice(const SchemaNode& at) {
  const std::string& attribute = at.node->Value("ID");
  const std::string& element = TextAt(*at.node, "ID");
  const std::string& logo = TextAt(*at.node, "ProductLogo");
  const std::string& id = !attribute.empty() ? attribute : !element.empty() ? element : logo;
  return Tag(at.node->name) + " " + QuotedValue(id) + " is listed a second time";
}

/// What follows from a value that is missing, empty or not allowed.
struct ValueEffect {
  FileKind kind;
  const char* element;
  const char* effect;
};

constexpr char kHandedOver[] = "the frame hands it over as it is";

constexpr ValueEffect kValueEffects[] = {
    {FileKind::kProduct, "Product", "the frame runs addons only in a product NVT or NVX"},
    {FileKind::kProduct, "Version", "the frame reads addons only in a version of three parts"},
    {FileKind::kPlugin, "Type", "the frame keeps such a plugin only as a driver of an addon"},
    {FileKind::kAddon, "ProductLogo", "the frame uses the versions in it for no product"},
    {FileKind::kTool, "ProductLogo", "the frame does not read it in the description of a tool"}};

const char* EffectOf(FileKind kind, const char* element) {
  for (const ValueEffect& one : kValueEffects) {
    if (one.kind == kind && std::strcmp(one.element, element) == 0) return one.effect;
  }
  return nullptr;
}

bool HasEntries(const SchemaNode& section, const XmlNode& node) {
  return std::any_of(node.children.begin(), node.children.end(), [&](const XmlNode& child) {
    return child.space.empty() && section.spec->Child(child.name) != nullptr;
  });
}

std::string EffectOfElement(FileKind kind, const SchemaNode& at) {
  if (at.spec == nullptr || at.parent == nullptr) return "the frame does not read it";
  if (at.spec->role != ElementRole::kSection) {
    return "the frame reads each value from the first that has it";
  }
  const auto& all = at.parent->node->children;
  const auto filled = std::count_if(all.begin(), all.end(), [&](const XmlNode& one) {
    return one.space.empty() && one.name == at.node->name && HasEntries(at, one);
  });
  if (filled > 1 && kind == FileKind::kTool) return "the frame reads only the first entry";
  if (filled > 1) return "the frame reads a part of the entries";
  return filled == 0 ? "the frame reads an empty list"
                     : "the frame reads all entries, since only one of them has any";
}

/// What the frame reads in the place of a text that is not as the schema has it.
std::string Reading(const std::string& text, ValueKind kind, const std::string& absent) {
  const bool isNumber = kind == ValueKind::kNumber || kind == ValueKind::kFlag;
  if (isNumber && ExceedsInt(text)) return "the frame reads some other number";
  const int number = std::atoi(text.c_str());
  switch (kind) {
    case ValueKind::kNumber:
      return "the frame reads it as " + (text.empty() ? absent : std::to_string(number));
    case ValueKind::kFlag:
      return number == 1 ? "the frame reads it as yes" : "the frame reads it as no";
    case ValueKind::kTrue:
      return text == "true" ? "the frame reads it as true" : "the frame reads it as false";
    case ValueKind::kNone:
    case ValueKind::kText:
    case ValueKind::kId:
    case ValueKind::kVersion:
      break;
  }
  return kHandedOver;
}

std::string EffectOfValue(FileKind kind, const SchemaNode& at, const XmlAttribute* attribute) {
  if (at.spec == nullptr) return "the frame does not read it";
  if (attribute == nullptr) {
    const bool isType = kind == FileKind::kPlugin && std::strcmp(at.spec->name, "Type") == 0;
    const int type = std::atoi(at.node->text.c_str());
    if (isType && (type == 1 || type == 2)) {
      return "the frame reads it as " + std::to_string(type);
    }
    const char* effect = EffectOf(kind, at.spec->name);
    return effect != nullptr ? effect : Reading(at.node->text, at.spec->value, at.spec->absent);
  }
  const AttributeSpec* spec = at.spec->Attribute(attribute->name);
  return spec == nullptr ? "the frame does not read it"
                         : Reading(attribute->value, spec->value, spec->absent);
}

std::string EffectOfMissing(FileKind kind, const SchemaNode& at) {
  if (at.spec == nullptr) return "the frame does not read " + Tag(at.node->name);
  for (const ElementSpec& child : at.spec->children) {
    const bool isMissing = child.required && Select(*at.node, child.name).empty();
    const char* effect = isMissing ? EffectOf(kind, child.name) : nullptr;
    if (effect != nullptr) return effect;
  }
  return "the frame reads what is missing as empty";
}

}  // namespace

std::string QuotedValue(const std::string& value) {
  std::string line;
  for (const char c : value) {
    const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    if (!isBlank) line += c;
    if (isBlank && (line.empty() || line.back() != ' ')) line += ' ';
  }
  constexpr std::size_t most = 60;  // columns
  return Quoted(CutToColumns(line, most));
}

std::string SchemaSentence(FileKind kind, SchemaFault fault, const SchemaNode& at,
                           const XmlAttribute* attribute) {
  switch (fault) {
    case SchemaFault::kElement:
      return UnexpectedElement(at);
    case SchemaFault::kMissingElement:
      return MissingElements(at);
    case SchemaFault::kAttribute:
      return UnexpectedAttribute(at, attribute);
    case SchemaFault::kMissingAttribute:
      return MissingAttributes(at);
    case SchemaFault::kValue:
      return WrongValue(kind, at, attribute);
    case SchemaFault::kText:
      return Tag(at.node->name) + (at.node->text.empty() ? " contains elements; allowed: attributes"
                                                         : " contains text; allowed: elements");
    case SchemaFault::kElementInText:
      return Tag(at.node->name) + " contains more than a text";
    case SchemaFault::kTwice:
      return ListedTwice(at);
    case SchemaFault::kOther:
      break;
  }
  return Tag(at.node->name) + " is not as the schema of the file says";
}

std::string SchemaEffect(FileKind kind, SchemaFault fault, const SchemaNode& at,
                         const XmlAttribute* attribute) {
  switch (fault) {
    case SchemaFault::kElement:
      return EffectOfElement(kind, at);
    case SchemaFault::kMissingElement:
    case SchemaFault::kMissingAttribute:
      return EffectOfMissing(kind, at);
    case SchemaFault::kValue:
      return EffectOfValue(kind, at, attribute);
    case SchemaFault::kAttribute:
    case SchemaFault::kText:
      return "the frame does not read it";
    case SchemaFault::kElementInText:
      return "the frame reads only the text directly in it";
    case SchemaFault::kTwice:
      return "the frame reads both";
    case SchemaFault::kOther:
      break;
  }
  return "the frame does not look at the schema";
}
