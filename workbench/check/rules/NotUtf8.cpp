#include <optional>

#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/TextEncoding.h"
#include "workbench/check/Words.h"

namespace {

std::string InHex(unsigned char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  return {kDigits[byte >> 4U], kDigits[byte & 15U]};
}

std::string BytesMessage(const CheckedFile& file, unsigned char byte) {
  const std::string declared = file.tree.encoding;
  const bool declaresUtf8 = declared.empty() || declared == "UTF-8" || declared == "utf-8";
  return "the byte " + InHex(byte) + " is not UTF-8; the file was probably saved as " +
         (declaresUtf8 ? "ISO-8859-1 or Windows-1252" : declared + ", as it declares");
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    if (file.readName.empty() || file.tree.wellFormed) continue;
    const std::string wide = WideEncoding(file.text);
    const std::optional<BadByte> bad = FirstBadByte(file.text);
    if (wide.empty() && !bad) continue;
    const TextPlace place = wide.empty() ? bad->place : TextPlace{1, 1};
    const std::string problem =
        wide.empty() ? BytesMessage(file, bad->byte) : "the file is saved as " + wide;
    findings.push_back(MakeFinding(file, place,
                                   problem + ", and the frame reads only UTF-8: " +
                                       ReadsAsEmpty(file.kind) + "; save it as UTF-8",
                                   "encoding"));
  }
}

}  // namespace

TEV_RULE(NotUtf8) = {
    "TEV106",
    Severity::kError,
    "A model file is not saved as UTF-8",
    "The frame reads every model file as UTF-8, whatever its first line declares. The parser "
    "refuses a file with a byte that is not UTF-8, even in a comment, and the frame uses nothing "
    "of "
    "it: it reads as empty. Files saved as UTF-16 are refused as well.",
    "<Name>Z\\xE4hler</Name>: the letter \\xE4 as one byte, as in ISO-8859-1",
    "Let the editor save the file as UTF-8, and declare encoding=\"UTF-8\" or nothing.",
    &Check};
