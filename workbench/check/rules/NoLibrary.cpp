#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

bool IsNoLibrary(PluginLibrary::State state) {
  using State = PluginLibrary::State;
  return state == State::kFolder || state == State::kNoFile || state == State::kUnreadable ||
         state == State::kEmpty || state == State::kNoLibrary || state == State::kDamaged ||
         state == State::kOtherKind;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    if (library->isProgram || !IsNoLibrary(library->state)) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    finding.message = WrongFile(*library) + ": " + LossOf(product, id, *library);
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(NoLibrary) = {
    "TEV403",
    Severity::kError,
    "A plugin's library is no library that can be loaded",
    "The file is there, but it is a folder, empty, unreadable, neither ELF nor PE, a program or an "
    "object file, or its headers lead outside of the file, as after a copy that was cut short. The "
    "loader refuses it, and the plugin counts as failed.",
    "an empty bin/storage.server.dll, left by a copy to a full disk",
    "Copy the library again from where it was built, and compare the sizes.",
    &Check};
