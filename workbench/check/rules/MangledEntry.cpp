#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Add(const std::string& id, const PluginLibrary& library, const std::string& entry,
         const std::string& mangled, RuleFindings& findings) {
  const std::string loss = entry == "Init" ? Quoted(id) + " counts as failed"
                                           : "the stop of " + Quoted(id) + " counts as failed";
  RuleFinding finding = LibraryFinding(id, library, entry);
  finding.message = "exports " + entry + " only as " + mangled +
                    ", the name of a C++ function: the frame does not find it, and " + loss +
                    "; declare it extern \"C\"";
  findings.push_back(std::move(finding));
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  using Entry = PluginLibrary::Entry;
  for (const auto& [id, library] : product.libraries) {
    if (library->isProgram || !product.Starts(id)) continue;
    if (library->init == Entry::kMissing && !library->mangledInit.empty()) {
      Add(id, *library, "Init", library->mangledInit, findings);
    }
    if (library->unInit == Entry::kMissing && !library->mangledUnInit.empty()) {
      Add(id, *library, "UnInit", library->mangledUnInit, findings);
    }
  }
}

}  // namespace

TEV_RULE(MangledEntry) = {
    "TEV407",
    Severity::kError,
    R"(Init or UnInit is exported by a C++ name: extern "C" is missing)",
    "A C++ compiler puts the types of its parameters into a function's name, so that Init becomes "
    "_Z4Initv or ?Init@@YA_NXZ. The frame looks up the plain name and does not find it: without "
    "Init "
    "the plugin counts as failed, without UnInit its stop does.",
    "bool Init() { return true; }",
    R"(Write extern "C" before both functions.)",
    &Check};
