#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    const bool isFound = library->state != PluginLibrary::State::kMissing;
    if (library->otherCase.empty() || !isFound) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    finding.place.file = library->otherCase;
    finding.message = "has other letter case than " + library->name +
                      ", which is asked for: this system finds it, one where letter case counts "
                      "does not; rename it";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(LibraryInOtherCase) = {
    "TEV402",
    Severity::kWarning,
    "A library is found only because this system ignores letter case",
    "The name of a plugin's library or program is its ID with .dll or .exe behind it. Windows "
    "finds "
    "a file whose name has other letter case. On Linux the same product lacks the library, which "
    "is reported there as missing (TEV401 or TEV416).",
    "bin/Storage.server.dll, while the ID is storage.server, on Windows",
    "Give the file exactly the name of the ID.",
    &Check};
