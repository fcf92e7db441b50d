#include <cstddef>
#include <map>
#include <string>

#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

// Looking for similar names goes through whole folders.
constexpr std::size_t kMostHints = 100;

/// "bin/TevAddons", or a text for the folder of Product.xml.
std::string FolderOf(const std::string& file, const std::string& name) {
  const std::size_t length = file.size() - name.size();
  return length == 0 ? "the product's folder" : file.substr(0, length - 1);
}

/// "bin/TevAddons, bin or the product's folder"
std::string FoldersOf(const NamedPackage& package) {
  std::string text;
  for (const std::string& file : package.tried) {
    if (!text.empty()) text += &file == &package.tried.back() ? " or " : ", ";
    text += FolderOf(file, package.name);
  }
  return text;
}

/// A name on disk that is nearly that of the package.
std::string Hint(const CheckedProduct& product, const NamedPackage& package) {
  for (const std::string& file : package.tried) {
    std::string hint = NameHint(product, file);
    if (!hint.empty()) return hint;
  }
  return std::string();
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const CheckedFile& file = product.File(FileKind::kInstalled);
  std::size_t hints = 0;
  // A package that exists shows where packages of this sort are kept.
  std::map<std::string, const NamedPackage*> existing;
  for (const NamedPackage& package : product.packages) {
    if (!package.file.empty()) existing.emplace(package.what, &package);
  }
  for (const NamedPackage& package : product.packages) {
    if (!package.file.empty() || package.tried.empty()) continue;
    const std::string hint = hints++ < kMostHints ? Hint(product, package) : std::string();
    const auto other = existing.find(package.what);
    if (hint.empty() && other == existing.end()) continue;
    RuleFinding finding;
    finding.place = PlaceOf(file, package.place);
    finding.message = package.what + " is " + Quoted(package.name) +
                      ", and there is no such file in " + FoldersOf(package) + hint;
    if (other != existing.end()) {
      finding.related.push_back({{other->second->file, 0, 0}, "another package is here"});
    }
    finding.plugin = package.owner;
    finding.subject = package.what;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(MissingPackage) = {
    "TEV510",
    Severity::kWarning,
    "A package that is named in InstalledProducts.xml does not exist",
    "The frame hands the names of packages on to the platform and looks for no file, so where a "
    "package lies is a matter of the platform; often it is kept elsewhere. The rule looks in the "
    "folder of the addon, in TevAddons, beside the executables and beside Product.xml. It reports "
    "a package that is in none of them only when there is a file with nearly the same name, or "
    "when another package that is named in the same way is there.",
    R"(ClientPackageName="parking-clent.zip", and parking-client.zip in TevAddons/Parking)",
    "Correct the name, or put the package where the others are.",
    &Check};
