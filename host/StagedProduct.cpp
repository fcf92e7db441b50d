#include "host/StagedProduct.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <system_error>
#include <utility>

#include "host/Commands.h"
#include "reference/os/LocalText.h"
#include "workbench/product/ModelText.h"

namespace fs = std::filesystem;

namespace {

constexpr char kInstallFolder[] = "TevAddons";
constexpr char kInstalled[] = "InstalledProducts";

bool IsModelFile(const fs::path& file) {
  return file.extension() == ".xml" || file.extension() == ".data";
}

fs::path NewFolder() {
  std::random_device random;
  const fs::path folder = fs::temp_directory_path() /
                          ("HUB.check." + std::to_string(random()) + std::to_string(random()));
  fs::create_directories(folder);
  return fs::canonical(folder);
}

ModelText ReadText(const fs::path& file) {
  return ReadModelText(LocalFromPath(file), &PathFromLocal);
}

/// TevAddons/ID/ID.xml in a folder.
ModelText ReadDescription(const fs::path& folder, const std::string& id) {
  return ReadText(folder / kInstallFolder / PathFromLocal(id) / PathFromLocal(id + ".xml"));
}

/// The IDs of the addons in a folder, sorted.
std::vector<std::string> AddonsIn(const fs::path& folder) {
  std::vector<std::string> ids;
  std::error_code error;
  for (fs::directory_iterator entry(folder / kInstallFolder, error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string id = LocalFromPath(entry->path().filename());
    const ModelText description = ReadDescription(folder, id);
    if (!description.missing || !description.read.empty()) ids.push_back(id);
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

bool IsFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

bool IsFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

/// Makes `to` a link to `from`; false where the system does not allow it.
bool Link(const fs::path& from, const fs::path& to) {
  std::error_code error;
  if (IsFolder(from)) {
    fs::create_directory_symlink(fs::absolute(from), to, error);
  } else {
    fs::create_symlink(fs::absolute(from), to, error);
  }
  return !error;
}

/// The version that the description of an addon has, as the frame reads it.
std::string VersionIn(const std::string& description) {
  const XmlTree tree = ParseXmlTree(description);
  const bool isRead = tree.root.name == RootName(FileKind::kAddon) && tree.root.space.empty();
  return isRead ? TextAt(tree.root, "Version") : std::string();
}

/// Changes a place in `file`, the staged list of installed addons, to the one in the product's
/// list; false when that has none.
bool UsePlaceOfProduct(Place& place, const std::string& file, const InstalledAddons& list) {
  if (place.file != file || place.line == 0) return true;
  const std::optional<TextPlace> before = list.PlaceBefore({place.line, place.column});
  if (!before) return false;
  place.line = before->line;
  place.column = place.column == 0 ? 0 : before->column;
  return true;
}

}  // namespace

StagedProduct::StagedProduct(const ProductPlace& product, const fs::path& addon)
    : m_place(product) {
  const std::vector<std::string> ids = AddonsIn(addon);
  if (ids.empty()) {
    throw UsageError("--with: " + LocalFromPath(addon) +
                     " has no TevAddons/ID/ID.xml, the description of an addon");
  }
  try {
    m_root = NewFolder();
    m_place.folder = m_root;
    AddBeside(product);
    AddFolder(product.folder / PathFromLocal(product.bin), product.bin, false);
    AddFolder(addon, product.bin, true);
    Install(ids);
  } catch (const fs::filesystem_error& error) {
    Remove();
    throw UsageError(std::string("--with: the product cannot be put together: ") + error.what());
  } catch (const UsageError&) {
    Remove();
    throw;
  }
}

void StagedProduct::UsePlacesOfProduct(RuleFindings& findings) const {
  const auto isNowhere = [&](RelatedPlace& related) {
    return !UsePlaceOfProduct(related.place, m_installedFile, *m_installed);
  };
  for (RuleFinding& finding : findings) {
    if (!UsePlaceOfProduct(finding.place, m_installedFile, *m_installed)) {
      finding.place = {m_installedFile, 0, 0};
    }
    std::vector<RelatedPlace>& related = finding.related;
    related.erase(std::remove_if(related.begin(), related.end(), isNowhere), related.end());
  }
}

void StagedProduct::Remove() const {
  std::error_code ignored;
  if (!m_root.empty()) fs::remove_all(m_root, ignored);
}

/// Adds the model files beside the folder of the executables, and packages if links are allowed.
void StagedProduct::AddBeside(const ProductPlace& product) {
  for (const auto& entry : fs::directory_iterator(product.folder)) {
    const std::string name = LocalFromPath(entry.path().filename());
    if (name == product.bin) continue;
    if (IsModelFile(entry.path())) {
      AddFile(entry.path(), name, false);
    } else {
      Link(entry.path(), m_root / entry.path().filename());
    }
  }
}

/// A link to a folder that is there is replaced by a folder: nothing is written where it leads.
void StagedProduct::AddFolder(const fs::path& from, const std::string& name, bool ofAddon) {
  const fs::path to = m_root / PathFromLocal(name);
  if (fs::is_symlink(to)) {
    const fs::path target = fs::read_symlink(to);
    fs::remove(to);
    AddFolder(target, name, false);
  }
  fs::create_directories(to);
  for (const auto& entry : fs::directory_iterator(from)) {
    const std::string inside = name + "/" + LocalFromPath(entry.path().filename());
    const bool isMerged = IsFolder(m_root / PathFromLocal(inside));
    if (IsFolder(entry.path()) && (isMerged || !entry.is_symlink())) {
      AddFolder(entry.path(), inside, ofAddon);
    } else {
      AddFile(entry.path(), inside, ofAddon);
    }
  }
}

void StagedProduct::AddFile(const fs::path& from, const std::string& name, bool ofAddon) {
  const fs::path to = m_root / PathFromLocal(name);
  const std::string list = m_place.bin + "/" + kInstallFolder + "/" + kInstalled;
  if (ofAddon && (name == list + ".xml" || name == list + ".data")) return;
  if (ofAddon) m_addonFiles[name] = from;
  fs::remove(to);
  std::error_code error;
  const bool isCopied = IsModelFile(from) && IsFile(from) && fs::copy_file(from, to, error);
  if (!isCopied && !Link(from, to)) fs::copy_file(from, to);
}

void StagedProduct::Install(const std::vector<std::string>& ids) {
  const std::string folder = m_place.bin + "/" + kInstallFolder + "/";
  const std::string name = folder + kInstalled + ".xml";
  const ModelText list = ReadText(m_root / PathFromLocal(name));
  std::vector<InstalledAddon> addons;
  for (const std::string& id : ids) {
    const fs::path bin = m_root / PathFromLocal(m_place.bin);
    addons.push_back({id, VersionIn(ReadDescription(bin, id).text)});
  }
  m_installed.emplace(list.text, addons);
  const bool isStandIn = !list.read.empty() && !list.problem.empty();
  m_installedFile = isStandIn ? folder + list.standIn : name;

  // A list that is there and cannot be read is left as it is: the check reports it.
  const fs::path standIn = m_root / PathFromLocal(folder + list.standIn);
  if (list.read.empty() && (!list.missing || fs::exists(standIn))) return;
  const std::string& text = m_installed->After();
  if (text != list.text && !ParseXmlTree(text).wellFormed) {
    throw UsageError("--with: the name of a folder in TevAddons is no ID: XML cannot contain it");
  }
  const fs::path file = m_root / PathFromLocal(m_installedFile);
  fs::remove(file);
  std::ofstream(file, std::ios::binary) << text;
}
