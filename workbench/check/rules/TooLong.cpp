#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (!file.HasContent()) continue;
    for (const TooLongText& text : file.tree.tooLong) {
      const std::string what =
          text.isAttribute ? "the attribute " + text.name : "the text of " + Tag(text.name);
      findings.push_back(MakeFinding(
          file, text.place,
          what + " is longer than 10000000 bytes, or of too many pieces: it reads as absent",
          text.name));
    }
  }
}

}  // namespace

TEV_RULE(TooLong) = {
    "TEV109",
    Severity::kError,
    "A text is too long for the frame",
    "The frame reads no text and no attribute beyond 10000000 bytes, and none that entities of a "
    "DOCTYPE make too large: it reads as absent, and the rest of the file is read.",
    "A <Name> made of entities that contain one another many times",
    "Shorten the text. Model files need no DOCTYPE.",
    &Check};
