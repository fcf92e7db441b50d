#include <optional>
#include <string>

#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/TextEncoding.h"

namespace {

/// Whether TEV106 reports what the parser cannot read; some parsers refuse the declared encoding
/// before they come to the byte.
bool IsEncodingFault(const CheckedFile& file) {
  if (!WideEncoding(file.text).empty()) return true;
  const std::optional<BadByte> bad = FirstBadByte(file.text);
  return bad && (bad->place.line <= file.tree.problemPlace.line ||
                 file.tree.problem.find("ncoding") != std::string::npos);
}

/// "nested deeper than 256 levels" for the parser's advice to programmers.
std::string Problem(const std::string& problem) {
  const std::string deep = "Excessive depth in document: ";
  if (problem.compare(0, deep.size(), deep) != 0) return "not well-formed: " + problem;
  const std::size_t end = problem.find_first_not_of("0123456789", deep.size());
  return "nested deeper than " + problem.substr(deep.size(), end - deep.size()) +
         " levels, which the parser refuses";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    const XmlTree& tree = file.tree;
    if (file.readName.empty() || tree.wellFormed || IsEncodingFault(file)) continue;
    findings.push_back(MakeFinding(file, tree.problemPlace,
                                   Problem(tree.problem) + "; " + ReadsAsEmpty(file.kind),
                                   "well-formed"));
  }
}

}  // namespace

TEV_RULE(NotWellFormed) = {
    "TEV103",
    Severity::kError,
    "A model file is not well-formed XML and reads as empty",
    "The frame gives the whole text to the XML parser and uses nothing of a text that is not "
    "well-formed: the file reads as if it had no element, without a message. An empty Product.xml "
    "starts nothing; an empty description of a plugin drops that plugin.",
    "<Plugin><Type>2</Typ></Plugin>",
    "Mend the line that the message names; an editor that knows XML shows the same place.",
    &Check};
