#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    if (!library->isWritableByAll) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    finding.message =
        "may be written by every user: who has an account here can replace the code " +
        std::string("of ") + Quoted(id) + "; remove the permission with chmod o-w";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(WritableLibrary) = {
    "TEV412",
    Severity::kWarning,
    "A library or program may be written by every user",
    "HUB runs the plugins' code with its own rights. A file that every user may write lets anybody "
    "with an account put other code there. This is read from the permissions on Linux; on Windows "
    "it is not judged.",
    "chmod 777 bin/storage.server.dll",
    "Remove the permission with chmod o-w, and see which script gave it.",
    &Check};
