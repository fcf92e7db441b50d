#include "workbench/check/FileHints.h"
#include "workbench/check/LibraryWords.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

constexpr std::size_t kMostHints = 20;  // looking for similar names takes time

/// Adds where the plugin or sub platform is listed.
void AddListed(const CheckedProduct& product, const std::string& id, RuleFinding& finding) {
  const std::string message = Quoted(id) + " is listed here";
  const Description* kept = product.Kept(id);
  if (kept != nullptr && !kept->entries.empty()) {
    finding.related.push_back({PlaceOf(*kept->entries.front()), message});
  }
  for (const SubPlatform& platform : product.subPlatforms) {
    if (platform.id != id || platform.node == nullptr) continue;
    const CheckedFile& file = product.File(FileKind::kProduct);
    finding.related.push_back({PlaceOf(file, *platform.node), message});
  }
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  std::size_t count = 0;
  for (const auto& [id, library] : product.libraries) {
    if (library->isProgram || library->state != PluginLibrary::State::kMissing) continue;
    RuleFinding finding = LibraryFinding(id, *library, library->name);
    const bool isLink = product.Exists(library->name);
    finding.message = (isLink ? "is a link to a file that does not exist: " : "does not exist: ") +
                      LossOf(product, id, *library);
    if (!isLink && ++count <= kMostHints) finding.message += NameHint(product, library->name);
    AddListed(product, id, finding);
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
