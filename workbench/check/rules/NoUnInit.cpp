#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    const bool isJudged = library->state == PluginLibrary::State::kGood && product.Starts(id);
    const bool isMissing = library->unInit == PluginLibrary::Entry::kMissing;
    if (library->isProgram || !isJudged || !isMissing || !library->mangledUnInit.empty()) continue;
    RuleFinding finding = LibraryFinding(id, *library, "UnInit");
    finding.message =
        "exports no UnInit: the stop of " + Quoted(id) +
        " counts as failed, and nothing in it is stopped before the library is freed" +
        DidYouMean("UnInit", library->similarNames);
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(NoUnInit) = {
    "TEV406",
    Severity::kWarning,
    "A plugin's library exports no UnInit",
    "At the stop the frame looks up the function UnInit by exactly this name. Without it the stop "
    "of the plugin counts as failed, and the library is freed all the same: a thread of the plugin "
    "that still runs then crashes the process.",
    "a library that exports Init and Uninit",
    R"(Export extern "C" bool UnInit(), which ends the plugin's threads and returns true.)",
    &Check};
