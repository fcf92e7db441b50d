#include <algorithm>
#include <array>

#include "workbench/check/FileFinding.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

/// UTF-8, and ASCII, which is a part of it.
bool IsPartOfUtf8(std::string encoding) {
  for (char& c : encoding) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  constexpr std::array<const char*, 4> kNames = {"UTF-8", "UTF8", "US-ASCII", "ASCII"};
  return std::any_of(kNames.begin(), kNames.end(),
                     [&](const char* name) { return encoding == name; });
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const CheckedFile& file : product.files) {
    const std::string& declared = file.tree.encoding;
    if (!file.tree.wellFormed || declared.empty() || IsPartOfUtf8(declared)) continue;
    findings.push_back(MakeFinding(
        file, {1, 0},
        "declares the encoding " + Quoted(declared) +
            ", but the frame reads every file as UTF-8: an editor that saves letters beyond ASCII "
            "as declared makes the whole file unreadable; declare UTF-8",
        declared));
  }
}

}  // namespace

TEV_RULE(DeclaredEncoding) = {
    "TEV108",
    Severity::kWarning,
    "A model file is UTF-8 but declares another encoding",
    "The frame reads every model file as UTF-8, whatever its first line declares. Other programs "
    "follow the declaration: they show letters beyond ASCII wrongly, or save the file in the "
    "declared encoding, and then the frame reads it as empty.",
    R"(<?xml version="1.0" encoding="ISO-8859-1"?>)",
    "Declare encoding=\"UTF-8\", or leave the declaration out.",
    &Check};
