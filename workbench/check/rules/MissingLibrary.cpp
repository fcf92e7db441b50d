#include "workbench/check/FileHints.h"
#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

constexpr std::size_t kMostHints = 20;  // looking for similar names takes time

const PluginEntry* EntryOf(const CheckedProduct& product, const std::string& id) {
  const Description* kept = product.Kept(id);
  return kept == nullptr || kept->entries.empty() ? nullptr : kept->entries.front();
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::size_t count = 0;
  for (const auto& [id, library] : product.libraries) {
    if (library->isProgram || library->state != PluginLibrary::State::kMissing) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    finding.message = "does not exist: " + LossOf(product, id, *library);
    if (++count <= kMostHints) finding.message += NameHint(product, library->name);
    const PluginEntry* entry = EntryOf(product, id);
    if (entry != nullptr) finding.related = {{PlaceOf(*entry), Quoted(id) + " is listed here"}};
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(MissingLibrary) = {
    "TEV401",
    Severity::kError,
    "A plugin's library does not exist",
    "The frame loads the library of a plugin or sub platform from the folder of the executables; "
    "its name is the ID in the description with .dll behind it, on Linux too. When there is no "
    "such "
    "file, the plugin counts as failed. The plugins that depend on it start all the same. A name "
    "in other letter case is another file on a system where letter case counts. The platform loads "
    "a driver's library by the same name.",
    "bin/Storage.server.dll, while the ID is storage.server",
    "Put the library there, or correct its name or the ID.",
    &Check};
