#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Add(const std::string& id, const PluginLibrary& library, const std::string& entry,
         RuleFindings& findings) {
  RuleFinding finding = LibraryFinding(id, library, entry);
  finding.message = "exports " + entry +
                    " as data, not as a function: the frame calls it, and the process crashes";
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  using Entry = PluginLibrary::Entry;
  for (const auto& [id, library] : product.libraries) {
    if (library->isProgram || !product.Starts(id)) continue;
    if (library->init == Entry::kNoFunction) Add(id, *library, "Init", findings);
    if (library->unInit == Entry::kNoFunction) Add(id, *library, "UnInit", findings);
  }
}

}  // namespace

TEV_RULE(EntryIsNoFunction) = {
    "TEV408",
    Severity::kError,
    "Init or UnInit is exported as data, not as a function",
    "The frame asks the loader for the address of Init and of UnInit and calls what is there. A "
    "variable of that name, such as a pointer to the function, has an address too: calling it "
    "crashes the process.",
    R"(extern "C" bool (*Init)() = &Start;)",
    "Export a function of that name that calls the other one.",
    &Check};
