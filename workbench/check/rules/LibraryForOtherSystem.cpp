#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  using State = PluginLibrary::State;
  for (const auto& [id, library] : product.libraries) {
    const bool isOther =
        library->state == State::kOtherFormat || library->state == State::kOtherMachine;
    if (library->isProgram || !isOther) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    finding.message = WrongFile(*library) + ": " + LossOf(product, id, *library);
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(LibraryForOtherSystem) = {
    "TEV404",
    Severity::kError,
    "A plugin's library is for another system or machine",
    "A library must have the format of the system (PE on Windows, ELF elsewhere) and be built for "
    "the same processor and word size as HUB. The loader refuses any other, and the plugin counts "
    "as failed. The name ends in .dll on every system, so it does not show the difference.",
    "the bin/storage.server.dll of the product for Windows, in a product for Linux",
    "Take the library from the build for this system.",
    &Check};
