#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "workbench/check/FileFinding.h"
#include "workbench/check/ModelWalk.h"
#include "workbench/check/NumberText.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// Whether the value says no by itself, so that nothing else can have been meant.
bool SaysNo(const std::string& value) {
  std::string word = WithoutBlanks(value);
  for (char& c : word) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  constexpr std::array<const char*, 6> kNo = {"", "false", "no", "off", "n", "f"};
  const bool isNo = std::any_of(kNo.begin(), kNo.end(), [&](const char* no) { return word == no; });
  return isNo || (IsNumber(word) && std::atoi(word.c_str()) == 0);
}

/// What follows from the reading.
std::string Effect(FileKind file, ValueKind kind, const std::string& name) {
  if (kind == ValueKind::kTrue) {
    return "the frame starts every plugin all the same and only hands the value over";
  }
  return file == FileKind::kPlugin && name == "IsDistributed"
             ? "the distributed module does not start the plugin"
             : "the frame only hands the value over";
}

std::string Message(const std::string& what, const std::string& value, ValueKind kind) {
  return kind == ValueKind::kTrue
             ? what + ": " + Quoted(value) + " reads as false: only \"true\", in these letters, " +
                   "reads as true; "
             : what + ": " + Quoted(value) + " reads as no: only 1 reads as yes; ";
}

/// Whether a value that is meant as yes, or as who knows what, reads as no.
bool IsWrong(const std::string& value, ValueKind kind) {
  if (kind == ValueKind::kTrue) return value != "true" && !SaysNo(value);
  return kind == ValueKind::kFlag && std::atoi(value.c_str()) != 1 && !SaysNo(value);
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    VisitKnown(file, [&](const KnownElement& element) {
      const XmlNode& node = element.node;
      const ElementSpec& spec = element.spec;
      if (IsWrong(node.text, spec.value)) {
        findings.push_back(MakeFinding(file, node.textPlace,
                                       Message(Tag(spec.name), node.text, spec.value) +
                                           Effect(file.kind, spec.value, spec.name),
                                       spec.name));
      }
      for (const AttributeSpec& one : spec.attributes) {
        const XmlAttribute* attribute = node.Attribute(one.name);
        if (attribute == nullptr || !IsWrong(attribute->value, one.value)) continue;
        findings.push_back(MakeFinding(
            file, attribute->place,
            Message(one.name, attribute->value, one.value) + Effect(file.kind, one.value, one.name),
            node.Value("ID") + "/" + one.name));
      }
    });
  }
}

}  // namespace

TEV_RULE(FlagValue) = {
    "TEV115",
    Severity::kWarning,
    "A value that probably means yes reads as no",
    "The files do not agree on how yes is written. Lazystart in Product.xml is yes only for the "
    "word true, in these letters and without blanks. IsDistributed, HaveClientPackage, "
    "IsIndependent and ServerSide are yes only for the number 1. Everything else is no, without a "
    "message. In the start, only the IsDistributed of a plugin counts, and only in the distributed "
    "module, which drops plugins without it; the other values are handed over to the platform.",
    "<IsDistributed>true</IsDistributed>",
    "Write what the message names; to say no, write false for Lazystart, and 0 for the others.",
    &Check};
