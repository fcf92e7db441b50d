#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "workbench/check/Rule.h"
#include "workbench/check/Words.h"
#include "workbench/output/Nearest.h"

namespace {

std::string Lowered(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

/// "bin/META_INFO/" of "bin/META_INFO/Portal.xml"
std::string FolderOf(const std::string& name) {
  return name.substr(0, name.rfind('/') + 1);
}

std::string LeafOf(const std::string& name) {
  return name.substr(name.rfind('/') + 1);
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The name that the frame would have to ask for to read this file: a .data file stands in for the
/// .xml file of the same name. Empty for a file that is no model file.
std::string ModelName(const std::string& name) {
  if (EndsWith(Lowered(name), ".xml")) return name;
  if (!EndsWith(Lowered(name), ".data")) return std::string();
  return name.substr(0, name.rfind('.')) + ".xml";
}

/// The files that the frame asks for, by their names.
class AskedFiles {
 public:
  explicit AskedFiles(const CheckedProduct& product) {
    for (const CheckedFile& file : product.files) {
      m_byLoweredName.emplace(Lowered(file.name), &file);
      // With ".." in an ID, the name leads back to another folder: TEV201 reports the ID.
      const bool isOwnName = file.name.find("/../") == std::string::npos;
      if (isOwnName) m_byLeaf.emplace(LeafOf(file.name), &file);
      m_leaves[FolderOf(file.name)].push_back(LeafOf(file.name));
    }
  }

  /// The file of this name, letter case aside; null for none.
  const CheckedFile* SameName(const std::string& name) const {
    const auto found = m_byLoweredName.find(Lowered(name));
    return found == m_byLoweredName.end() ? nullptr : found->second;
  }

  /// A file in the same folder with nearly the same name; null for none.
  const CheckedFile* Neighbour(const std::string& name) const {
    const auto here = m_leaves.find(FolderOf(name));
    if (here == m_leaves.end()) return nullptr;
    const std::string nearest = Nearest(LeafOf(name), here->second);
    return nearest.empty() ? nullptr : SameName(FolderOf(name) + nearest);
  }

  /// A file of this name in another folder; null for none.
  const CheckedFile* Elsewhere(const std::string& name) const {
    const auto found = m_byLeaf.find(LeafOf(name));
    return found == m_byLeaf.end() ? nullptr : found->second;
  }

  bool Includes(const std::string& name) const { return SameName(name) != nullptr; }

 private:
  std::map<std::string, const CheckedFile*> m_byLoweredName;
  std::map<std::string, const CheckedFile*> m_byLeaf;
  std::map<std::string, std::vector<std::string>> m_leaves;
};

/// The folder of one plugin, addon or tool: "bin/META_INFO/storage.server/" in "bin/META_INFO/".
struct OwnFolder {
  std::string id;      // empty for a file in another folder
  std::string parent;  // META_INFO or TevAddons
};

OwnFolder OwnFolderOf(const CheckedProduct& product, const std::string& name) {
  for (const char* parent : {"META_INFO", "TevAddons"}) {
    const std::string begin = product.bin + "/" + parent + "/";
    const std::string folder = FolderOf(name);
    if (folder.size() <= begin.size() || folder.compare(0, begin.size(), begin) != 0) continue;
    return {folder.substr(begin.size(), folder.size() - begin.size() - 1), parent};
  }
  return {};
}

/// What to say of an unread file in the folder of a plugin, addon or tool; empty for nothing: such
/// a folder may also contain files of the plugin's own.
std::string InOwnFolder(const CheckedProduct& product, const AskedFiles& asked,
                        const OwnFolder& folder, const std::string& name) {
  const std::string description = FolderOf(name) + folder.id + ".xml";
  const bool isDescription = name == description;
  if (folder.parent == "META_INFO" && isDescription) return std::string();  // TEV202
  if (asked.Includes(description)) return std::string();
  if (!isDescription) {
    return product.Exists(description)
               ? std::string()
               : "is not read: a description in this folder must have the name " +
                     LeafOf(description);
  }
  if (!product.File(FileKind::kInstalled).HasContent()) return std::string();
  return "is not read: InstalledProducts.xml lists no addon and no tool " + Quoted(folder.id);
}

/// What to say of a file that the frame does not read; empty for nothing.
std::string Message(const CheckedProduct& product, const AskedFiles& asked,
                    const std::string& name) {
  const std::string model = ModelName(name);
  if (model.empty()) return std::string();
  if (const CheckedFile* same = asked.SameName(model)) {
    // Where letter case does not count this is the file itself; a missing one is reported with
    // this name as a hint.
    if (same->name == model || !product.Exists(same->name)) return std::string();
    return "is not read; the frame reads " + LeafOf(same->name) +
           " beside it, and on Windows both names are one file";
  }
  if (const CheckedFile* beside = asked.Neighbour(model)) {
    if (beside->readName.empty()) return std::string();  // reported as missing, with this as a hint
    return "is not read; the frame reads " + LeafOf(beside->readName) + " beside it";
  }
  if (const CheckedFile* other = asked.Elsewhere(model)) {
    return "is not read: it is in the wrong folder; the frame asks for " + other->name;
  }
  const OwnFolder folder = OwnFolderOf(product, model);
  if (!folder.id.empty()) return InOwnFolder(product, asked, folder, model);
  const std::string parent = FolderOf(name);
  const bool isModelFolder =
      parent == product.bin + "/META_INFO/" || parent == product.bin + "/TevAddons/";
  return isModelFolder ? "is not read: the frame asks for no file of this name" : std::string();
}

void Check(const CheckedProduct& product, RuleFindings& findings) {
  const AskedFiles asked(product);
  for (const std::string& name : product.names) {
    std::string message = Message(product, asked, name);
    if (message.empty()) continue;
    RuleFinding finding;
    finding.place = {name, 0, 0};
    finding.message = std::move(message);
    finding.subject = name;
    findings.push_back(std::move(finding));
  }
}

}  // namespace

TEV_RULE(UnreadFile) = {
    "TEV118",
    Severity::kNote,
    "A file looks like a model file, but nothing reads it",
    "The frame asks for a few files by fixed names, for META_INFO/ID/ID.xml of each listed plugin, "
    "and for TevAddons/ID/ID.xml of each installed addon and tool. It does not look at other "
    "files. A copy, a misspelt name or a file in the wrong folder has no effect.",
    "META_INFO/Platform_old.xml beside META_INFO/Platform.xml",
    "Remove it, or give it the name and folder that the message names.",
    &Check};
