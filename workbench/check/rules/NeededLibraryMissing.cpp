#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

using State = NeededLibrary::State;

std::string Problem(const NeededLibrary& needed) {
  if (needed.state == State::kUnusable) {
    return ", and the loader takes " + needed.file + ", which is no library for this system";
  }
  if (needed.state == State::kOtherMachine) {
    return ", and " + needed.file + " is for another system or machine";
  }
  return ", which is in no folder where the loader looks";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const auto& [id, library] : product.libraries) {
    for (const NeededLibrary& needed : library->notFound) {
      if (needed.state == State::kBeside) continue;
      RuleFinding finding = LibraryFinding(id, *library, needed.name);
      const std::string way = needed.neededBy.empty() ? "" : needed.neededBy + ", which needs ";
      finding.message =
          "needs " + way + needed.name + Problem(needed) + ": " + LossOf(product, id, *library);
      if (!needed.otherCase.empty()) {
        finding.message +=
            "; there is " + Quoted(needed.otherCase) + " beside it, with other letter case";
      }
      findings.push_back(std::move(finding));
    }
  }
}

}  // namespace

TEV_RULE(NeededLibraryMissing) = {
    "TEV409",
    Severity::kError,
    "A library that a plugin's library needs is not found",
    "A library names the libraries that it needs, and the loader must find each of them, and those "
    "that they need, or it loads none. On Linux it looks in the library's RPATH and in HUB's "
    "(unless "
    "the library has a RUNPATH), in LD_LIBRARY_PATH, in the RUNPATH, in the folders of ld.so.conf "
    "and in the system's; on Windows in the folder of HUB, in that of the product's executables, "
    "in "
    "the system's and in PATH. What HUB itself has loaded is found by its name. A file for another "
    "machine is skipped. A plugin's library that lacks one counts as missing, and the plugin as "
    "failed.",
    "storage.server.dll needs libsqlite3.so.0, and the package is not installed",
    "Install the package that has the library, or ship it in the folder of the executables and "
    "link "
    "the plugin with an RPATH of $ORIGIN.",
    &Check};
