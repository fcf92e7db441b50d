#include <algorithm>
#include <utility>

#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void CheckFolder(const CheckedProduct& product, RuleFindings& findings) {
  const bool isWritable =
      std::any_of(product.libraries.begin(), product.libraries.end(),
                  [](const auto& library) { return library.second->isFolderWritableByAll; });
  if (!isWritable) return;
  RuleFinding finding;
  finding.place.file = product.bin;
  finding.subject = product.bin;
  finding.message =
      "every user may put files into the folder and replace those in it: every local user can "
      "replace the code of every plugin; remove the permission with chmod o-w";
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  CheckFolder(product, findings);
  for (const auto& [id, library] : product.libraries) {
    if (!library->isWritableByAll) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    finding.message = "may be written by every user: every local user can replace the code of " +
                      Quoted(id) + "; remove the permission with chmod o-w";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(WritableLibrary) = {
    "TEV412",
    Severity::kWarning,
    "A library or program, or their folder, may be written by every user",
    "HUB runs the plugins' code with its own rights. A file that every user may write lets every "
    "local user put other code there; so does a folder, unless its sticky bit lets users replace "
    "only their own files. This is read from the permissions on Linux; on Windows it is not "
    "judged.",
    "chmod 777 bin/storage.server.dll",
    "Remove the permission with chmod o-w, and see which script gave it.",
    &Check};
