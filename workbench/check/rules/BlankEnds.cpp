#include <array>
#include <string>
#include <string_view>

#include "workbench/check/ModelWalk.h"
#include "workbench/check/Rule.h"
#include "workbench/check/SchemaWords.h"
#include "workbench/check/Words.h"

namespace {

struct Invisible {
  std::string_view bytes;
  const char* name;
};

constexpr std::array<Invisible, 8> kInvisible = {{{" ", "a blank"},
                                                  {"\n", "a line break"},
                                                  {"\r", "a line break"},
                                                  {"\t", "a tab"},
                                                  {"\xC2\xA0", "a no-break space"},
                                                  {"\xE2\x80\x8B", "a zero-width space"},
                                                  {"\xE3\x80\x80", "an ideographic space"},
                                                  {"\xEF\xBB\xBF", "a byte-order mark"}}};

/// The name of the invisible character at the beginning or end of `text`; null for none. A line
/// break at an end is mostly followed by blanks, and is what a reader looks for.
const char* AtBegin(std::string_view text) {
  for (const Invisible& one : kInvisible) {
    if (text.substr(0, one.bytes.size()) == one.bytes) return one.name;
  }
  return nullptr;
}

const char* AtEnd(std::string_view text) {
  const std::size_t visible = text.find_last_not_of(" \t\r\n");
  const std::string_view ending = text.substr(visible == std::string_view::npos ? 0 : visible + 1);
  if (ending.find('\n') != std::string_view::npos) return "a line break";
  for (const Invisible& one : kInvisible) {
    if (text.size() < one.bytes.size()) continue;
    if (text.substr(text.size() - one.bytes.size()) == one.bytes) return one.name;
  }
  return nullptr;
}

std::string Ends(const std::string& text) {
  const char* begin = AtBegin(text);
  const char* end = AtEnd(text);
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) return " is nothing but blanks";
  std::string ends;
  if (begin != nullptr) ends = " begins with " + std::string(begin);
  if (end != nullptr)
    ends += (begin == nullptr ? " ends with " : " and ends with ") + std::string(end);
  return ends;
}

const char* Consequence(ValueKind kind) {
  if (kind == ValueKind::kVersion) {
    return "it belongs to the version, which is compared byte by byte";
  }
  return kind == ValueKind::kId ? "it belongs to the name, which is then another one"
                                : "it belongs to the text, which is handed on with it";
}

bool IsText(ValueKind kind) {
  return kind == ValueKind::kText || kind == ValueKind::kId || kind == ValueKind::kVersion;
}

bool HasBlankEnds(ValueKind kind, const std::string& text) {
  return IsText(kind) && !text.empty() && (AtBegin(text) != nullptr || AtEnd(text) != nullptr);
}

void Report(const KnownElement& element, const XmlAttribute* attribute, ValueKind kind,
            RuleFindings& findings) {
  const XmlNode& node = element.node;
  const std::string& text = attribute == nullptr ? node.text : attribute->value;
  const std::string what = attribute == nullptr ? "" : "the attribute " + attribute->name + " of ";
  RuleFinding finding;
  finding.place = PlaceOf(element.file, attribute == nullptr ? node.place : attribute->place);
  finding.message = what + Tag(node.name) + ", " + QuotedValue(text) + "," + Ends(text) + ": " +
                    Consequence(kind);
  finding.subject = node.name + (attribute == nullptr ? "" : " " + attribute->name) + " " + text;
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  VisitKnown(product, [&](const KnownElement& element) {
    if (HasBlankEnds(element.spec.value, element.node.text)) {
      Report(element, nullptr, element.spec.value, findings);
    }
    for (const XmlAttribute& attribute : element.node.attributes) {
      const AttributeSpec* spec = element.spec.Attribute(attribute.name);
      // TEV216 and TEV309 say what a wrong Category costs.
      if (spec != nullptr && attribute.name != "Category" &&
          HasBlankEnds(spec->value, attribute.value)) {
        Report(element, &attribute, spec->value, findings);
      }
    }
  });
}

}  // namespace

TEV_RULE(BlankEnds) = {
    "TEV121",
    Severity::kWarning,
    "A text begins or ends with a blank or a line break",
    "The frame cuts nothing off a text: a blank, a tab or a line break at an end belongs to it. "
    "An ID becomes another ID, which nothing else refers to, and a version is compared with its "
    "blank. Only around numbers blanks do not count. An attribute that is nothing but blanks has "
    "them as its value; an element with nothing but blanks is empty.",
    "<ID>\n  storage.server\n</ID>",
    "Write the text and its tags on one line, without blanks around the text.",
    &Check};
