#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    if (library->sameFileAs.empty() || library->isProgram) continue;
    const auto first = product.libraries.find(library->sameFileAs);
    if (first == product.libraries.end()) continue;
    const std::string& other = first->second->name;
    RuleFinding finding = LibraryFinding(id, *library, other);
    finding.message = "is the same file as " + other + ": the loader maps it once, and Init and " +
                      "UnInit are called twice in it, for " + Quoted(library->sameFileAs) +
                      " and for " + Quoted(id);
    finding.related = {{{other, 0, 0}, "the library of " + Quoted(library->sameFileAs)}};
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(SharedLibraryFile) = {
    "TEV411",
    Severity::kWarning,
    "Two plugins have one library file",
    "The loader knows a file by what it is, not by its name: when two names are links to one file, "
    "the second load returns the library that is loaded already. Its Init is then called twice, "
    "perhaps on two threads at once, and its variables exist once.",
    "ln -s storage.server.dll bin/archive.server.dll",
    "Give each plugin a copy, or build one library for each.",
    &Check};
