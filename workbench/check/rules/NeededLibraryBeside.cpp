#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    for (const NeededLibrary& needed : library->notFound) {
      if (needed.state != NeededLibrary::State::kBeside) continue;
      RuleFinding finding = LibraryFinding(id, *library, needed.name);
      const bool isDirect = needed.neededBy.empty();
      finding.message = "needs " + (isDirect ? "" : needed.neededBy + ", which needs ") +
                        needed.name + ", which lies beside it, where the loader does not look: " +
                        LossOf(product, id, *library) + "; link " +
                        (isDirect ? library->name : needed.neededBy) + " with an RPATH of $ORIGIN";
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(NeededLibraryBeside) = {
    "TEV410",
    Severity::kError,
    "A needed library lies beside the plugin, where the loader does not look",
    "On Linux the loader does not look in the folder of the library that needs another one, unless "
    "that library's RPATH or RUNPATH names the folder: $ORIGIN stands for it. With another RUNPATH "
    "the RPATH of HUB does not count either. The plugin's library is not loaded, unless another "
    "plugin happens to have loaded the needed library before.",
    "storage.server.dll needs libstore.so, which lies in bin too, and has no RUNPATH",
    "Link with -Wl,-rpath,'$ORIGIN'; with CMake, set INSTALL_RPATH to $ORIGIN.",
    &Check};
