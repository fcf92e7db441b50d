#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "workbench/check/Addons.h"
#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"

namespace {

bool IsMissing(const CheckedFile& file) {
  return file.missing && file.readName.empty();
}

void Report(const CheckedProduct& product, const CheckedFile& file, const std::string& loss,
            RuleFindings& findings) {
  RuleFinding finding;
  finding.place = PlaceOf(file);
  finding.message = WhyUnreadable(file) + ": " + loss + NameHint(product, file.name);
  finding.subject = file.name;
  findings.push_back(std::move(finding));
}

/// The ID of the description `name` in `folder`: "folder/ID/ID.xml"; empty for another name.
std::string DescribedBy(const std::string& name, const std::string& folder) {
  const std::size_t length = name.find('/', folder.size()) - folder.size();
  const std::string id = name.substr(folder.size(), length);
  return name == folder + id + "/" + id + ".xml" ? id : std::string();
}

/// The IDs of the addons and tools that have a description on disk.
std::vector<std::string> Described(const CheckedProduct& product) {
  const std::string folder = product.bin + "/TevAddons/";
  std::vector<std::string> ids;
  auto name = std::lower_bound(product.names.begin(), product.names.end(), folder);
  for (; name != product.names.end() && name->compare(0, folder.size(), folder) == 0; ++name) {
    std::string id = DescribedBy(*name, folder);
    if (!id.empty()) ids.push_back(std::move(id));
  }
  return ids;
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  for (const AddonKind& kind : AddonKinds(product)) {
    const CheckedFile& catalogue = *kind.catalogue;
    const std::size_t installed = kind.installed->size();
    if (!IsMissing(catalogue) || installed == 0) continue;
    Report(product, catalogue,
           "no " + std::string(kind.what) + " is read, although " + Counted(installed, kind.what) +
               (installed == 1 ? " is" : " are") + " installed",
           findings);
  }
  const CheckedFile& installed = product.File(FileKind::kInstalled);
  if (!IsMissing(installed)) return;
  const std::vector<std::string> ids = Described(product);
  if (ids.empty()) return;
  Report(product, installed,
         "no addon and no tool counts as installed, although " + QuotedList(ids) +
             (ids.size() == 1 ? " has a description" : " have descriptions"),
         findings);
}

}  // namespace

TEV_RULE(MissingCatalogue) = {
    "TEV512",
    Severity::kError,
    "A list of addons or tools is missing, and some are installed",
    "The frame reads ProductAddons.xml first; when it is missing, no addon is read, not even an "
    "installed one. The same holds for ProductTools.xml and tools. When InstalledProducts.xml is "
    "missing, nothing counts as installed. A product without addons and tools needs none of these "
    "files. Frame_Init succeeds in all these cases.",
    "An installed addon, and no ProductAddons.xml beside Product.xml",
    "Put the file where the message says; an empty <AddonList/> or <ToolList/> is enough.",
    &Check};
