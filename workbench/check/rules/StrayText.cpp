#include <string>

#include "workbench/check/FileFinding.h"
#include "workbench/check/ModelWalk.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// The text in one line, cut after some 40 bytes at the end of a character.
std::string Shortened(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  std::string line = text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
  for (char& c : line) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  std::size_t end = 40;
  if (line.size() <= end) return line;
  while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0U) == 0x80U) --end;
  return line.substr(0, end) + "...";
}

/// "; did you mean ID="a.server"?" in an element that should have an ID and has none.
std::string Hint(const XmlNode& node, const ElementSpec& spec, const std::string& text) {
  const AttributeSpec* id = spec.Attribute("ID");
  if (id == nullptr || node.Attribute("ID") != nullptr) return std::string();
  return "; did you mean ID=" + Quoted(text) + "?";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    VisitKnown(file, [&](const KnownElement& element) {
      const XmlNode& node = element.node;
      const ElementSpec& spec = element.spec;
      if (spec.value != ValueKind::kNone || node.text.empty()) return;
      const std::string text = Shortened(node.text);
      findings.push_back(MakeFinding(file, node.textPlace,
                                     "the text " + Quoted(text) + " in " + Tag(spec.name) +
                                         ": the frame reads no text there" + Hint(node, spec, text),
                                     spec.name));
    });
  }
}

}  // namespace

TEV_RULE(StrayText) = {
    "TEV117",
    Severity::kWarning,
    "There is text where the frame reads none",
    "An element that contains a list, or whose values are attributes, has no text of its own. The "
    "frame skips text in it, without a message. Often it is what remains of a tag or of a comment.",
    "<Plugin>storage.server</Plugin> instead of <Plugin ID=\"storage.server\"/>",
    "Remove the text, or write it as a comment or as the attribute that was meant.",
    &Check};
