#include "host/StagedProduct.h"

#include <fstream>
#include <iterator>
#include <random>
#include <system_error>
#include <vector>

#include "host/Commands.h"
#include "reference/os/LocalText.h"
#include "workbench/product/XmlTree.h"

namespace fs = std::filesystem;

namespace {

constexpr char kInstalledRoot[] = "InstalledProductsDescription";

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

std::string ReadText(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// The IDs of the addons in a folder laid out as TevAddons.
std::vector<std::string> AddonsIn(const fs::path& folder) {
  std::vector<std::string> ids;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const fs::path name = entry->path().filename();
    std::error_code ignored;
    const fs::path description = entry->path() / (name.string() + ".xml");
    if (fs::is_regular_file(description, ignored)) ids.push_back(LocalFromPath(name));
  }
  return ids;
}

/// `text` with `entry` as the last one of the section <Addons>.
std::string WithEntry(std::string text, const std::string& entry) {
  const std::string end = "</Addons>";
  const std::size_t section = text.rfind(end);
  if (section != std::string::npos) return text.insert(section, entry);
  const std::string root = std::string("</") + kInstalledRoot + ">";
  const std::size_t document = text.rfind(root);
  const std::string whole = "<Addons>" + entry + end;
  if (document != std::string::npos) return text.insert(document, whole);
  return std::string("<") + kInstalledRoot + ">" + whole + root;
}

}  // namespace

StagedProduct::StagedProduct(const ProductPlace& product, const fs::path& addon)
    : m_place(product) {
  const std::vector<std::string> ids = AddonsIn(addon / "TevAddons");
  if (ids.empty()) {
    throw UsageError("--with: " + LocalFromPath(addon) +
                     " has no TevAddons/ID/ID.xml: lay it out as the folder of the executables");
  }
  try {
    m_root = NewFolder();
    m_place.folder = m_root;
    for (const auto& entry : fs::directory_iterator(product.folder)) {
      if (entry.is_regular_file() && IsModelFile(entry.path())) {
        AddFile(entry.path(), LocalFromPath(entry.path().filename()), false);
      }
    }
    AddFolder(product.folder / PathFromLocal(product.bin), product.bin, false);
    AddFolder(addon, product.bin, true);
    for (const std::string& id : ids) Install(id);
  } catch (const fs::filesystem_error& error) {
    Remove();
    throw UsageError(std::string("--with: the product cannot be put together: ") + error.what());
  }
}

void StagedProduct::Remove() const {
  std::error_code ignored;
  if (!m_root.empty()) fs::remove_all(m_root, ignored);
}

void StagedProduct::AddFolder(const fs::path& from, const std::string& name, bool ofAddon) {
  fs::create_directories(m_root / PathFromLocal(name));
  for (const auto& entry : fs::directory_iterator(from)) {
    const std::string inside = name + "/" + LocalFromPath(entry.path().filename());
    if (entry.is_directory()) {
      AddFolder(entry.path(), inside, ofAddon);
    } else if (entry.is_regular_file()) {
      AddFile(entry.path(), inside, ofAddon);
    }
  }
}

void StagedProduct::AddFile(const fs::path& from, const std::string& name, bool ofAddon) {
  const fs::path to = m_root / PathFromLocal(name);
  std::error_code error;
  fs::remove(to, error);
  if (ofAddon) m_addonFiles[name] = from;
  if (!IsModelFile(from)) {
    fs::create_symlink(fs::absolute(from), to, error);
    if (!error) return;
  }
  fs::copy_file(from, to);
}

void StagedProduct::Install(const std::string& id) const {
  const fs::path file = m_root / PathFromLocal(m_place.bin) / "TevAddons" / "InstalledProducts.xml";
  const std::string text = ReadText(file);
  const XmlTree tree = ParseXmlTree(text);
  for (const ListEntry& entry : SelectList(tree.root, "Addons/Addon")) {
    if (entry.node != nullptr && entry.node->Value("ID") == id) return;
  }
  const std::string version = TextAt(
      ParseXmlTree(ReadText(file.parent_path() / PathFromLocal(id) / PathFromLocal(id + ".xml")))
          .root,
      "Version");
  std::ofstream(file, std::ios::binary)
      << WithEntry(text, "<Addon ID=\"" + id + "\" Version=\"" + version + "\"/>");
}
