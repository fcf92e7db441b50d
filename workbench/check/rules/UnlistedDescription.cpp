#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "workbench/check/FileHints.h"
#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/LetterCase.h"
#include "workbench/output/Nearest.h"

namespace {

/// The folders in META_INFO that contain a description, with the description's name.
using Folders = std::map<std::string, std::string>;

Folders FoldersOf(const CheckedProduct& product) {
  const std::string meta = product.bin + "/META_INFO/";
  Folders folders;
  auto at = std::lower_bound(product.names.begin(), product.names.end(), meta);
  for (; at != product.names.end() && at->compare(0, meta.size(), meta) == 0; ++at) {
    const std::size_t slash = at->find('/', meta.size());
    if (slash == std::string::npos) continue;
    const std::string folder = at->substr(meta.size(), slash - meta.size());
    const std::string file = at->substr(slash + 1);
    if (file == folder + ".xml") folders[folder] = *at;
    if (file == folder + ".data") folders.emplace(folder, *at);
  }
  return folders;
}

/// Adds each value of an attribute ID, wherever it stands: other rules report an entry that stands
/// where the frame does not read it.
void AddIDs(const XmlNode& node, std::set<std::string>& ids) {
  std::vector<const XmlNode*> left = {&node};
  while (!left.empty()) {
    const XmlNode* next = left.back();
    left.pop_back();
    const std::string& id = next->Value("ID");
    if (!id.empty()) ids.insert(id);
    for (const XmlNode& child : next->children) left.push_back(&child);
  }
}

struct Listed {
  bool complete = true;  // no file that lists plugins is lost
  std::set<std::string> ids;
  std::set<std::string> subPlatforms;
  std::set<std::string> withOtherCase;          // in small letters: folders found by another name
  std::vector<std::string> withoutDescription;  // the first ones
};

Listed ListedIn(const CheckedProduct& product) {
  Listed listed;
  for (const CheckedFile& file : product.files) {
    const bool lists = file.kind == FileKind::kProduct || file.kind == FileKind::kDrivers ||
                       file.kind == FileKind::kAddon;
    if (!lists) continue;
    listed.complete = listed.complete && file.HasContent();
    AddIDs(file.tree.root, listed.ids);
  }
  for (const CheckedFile& file : product.otherAddons) AddIDs(file.tree.root, listed.ids);
  for (const PluginEntry& entry : product.entries) {
    const bool isMissing = entry.description == nullptr;
    if (isMissing && listed.withoutDescription.size() < kMostHints) {
      listed.withoutDescription.push_back(entry.id);
    } else if (!isMissing && !product.Exists(entry.description->file->readName)) {
      listed.withOtherCase.insert(Lowered(entry.id));
    }
  }
  for (const SubPlatform& subPlatform : product.subPlatforms) {
    listed.subPlatforms.insert(subPlatform.id);
  }
  for (const PluginEntry& entry : product.entries) listed.subPlatforms.erase(entry.id);
  return listed;
}

/// The folders that TEV201 names as the ones that were meant.
std::set<std::string> FoldersMeant(const Listed& listed, const Folders& folders) {
  std::vector<std::string> names;
  for (const auto& folder : folders) names.push_back(folder.first);
  std::set<std::string> meant;
  for (const std::string& id : listed.withoutDescription) meant.insert(Nearest(id, names));
  return meant;
}

std::string Message(const std::string& folder, const Listed& listed) {
  if (listed.subPlatforms.count(folder) != 0) {
    return Quoted(folder) +
           " is listed as a sub platform, for which the frame reads no description: this file is "
           "not read, and the dependencies in it order nothing";
  }
  return "no list names " + Quoted(folder) +
         ": the frame does not read this file, and the plugin never starts";
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const Listed listed = ListedIn(product);
  if (!listed.complete) return;  // TEV101 to TEV104 report what is lost
  const Folders folders = FoldersOf(product);
  const std::set<std::string> meant = FoldersMeant(listed, folders);
  for (const auto& [folder, file] : folders) {
    const bool isSubPlatform = listed.subPlatforms.count(folder) != 0;
    const bool isListed = (listed.ids.count(folder) != 0 && !isSubPlatform) ||
                          listed.withOtherCase.count(Lowered(folder)) != 0;
    if (isListed || meant.count(folder) != 0) continue;
    RuleFinding finding;
    finding.place.file = file;
    finding.message = Message(folder, listed);
    finding.plugin = folder;
    finding.subject = "description";
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(UnlistedDescription) = {
    "TEV202",
    Severity::kWarning,
    "A description that no list names",
    "The frame does not search META_INFO: it reads the descriptions of the plugins that "
    "Product.xml, DeviceDrivers.xml and the descriptions of installed addons list, and of the "
    "folder META_INFO/ID only the file ID.xml, or ID.data instead. A plugin that is listed "
    "nowhere never starts, without a message. Plugins that an addon in TevAddons lists are no "
    "findings, installed or not.",
    "META_INFO/backup.server/backup.server.xml, and no \"backup.server\" in Product.xml",
    "List the plugin, or remove its folder.",
    &Check};
