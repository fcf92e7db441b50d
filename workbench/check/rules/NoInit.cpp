#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    const bool isJudged = library->state == PluginLibrary::State::kGood && product.Starts(id);
    const bool isMissing = library->init == PluginLibrary::Entry::kMissing;
    if (library->isProgram || !isJudged || !isMissing || !library->mangledInit.empty()) continue;
    RuleFinding finding = LibraryFinding(id, *library, "Init");
    finding.message = "exports no Init: the frame loads the library, and " + Quoted(id) +
                      " counts as failed" + DidYouMean("Init", library->similarNames);
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(NoInit) = {
    "TEV405",
    Severity::kError,
    "A plugin's library exports no Init",
    "The frame looks up the function Init in the library by exactly this name. Without it the "
    "plugin counts as failed; the library stays loaded, and its UnInit is called at the stop. "
    "Often "
    "the function is there but not exported: hidden by -fvisibility=hidden or a version script, or "
    "without __declspec(dllexport).",
    R"(bool Init() { return true; }, compiled with -fvisibility=hidden)",
    R"(Export it: extern "C" with visibility("default"), or __declspec(dllexport) on Windows.)",
    &Check};
