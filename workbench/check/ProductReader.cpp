#include "workbench/check/ProductReader.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "src/model/PluginDescription.h"
#include "workbench/check/DerivedModel.h"
#include "workbench/product/ModelText.h"

namespace fs = std::filesystem;

namespace {

constexpr char kServer[] = "server";
constexpr char kDriver[] = "dam_driver";

std::int32_t Number(const std::string& text, std::int32_t fallback) {
  return text.empty() ? fallback : std::atoi(text.c_str());
}

/// Fills a CheckedProduct, in the order in which the frame reads the files.
class ProductReader {
 public:
  ProductReader(const ProductPlace& place, const LocalNames& names, CheckedProduct& product)
      : m_folder(names.fromPath(place.folder) + "/"), m_names(names), m_product(product) {
    product.bin = place.bin;
  }

  void Read() {
    const std::string meta = m_product.bin + "/META_INFO/";
    const std::string installFolder = m_product.bin + "/TevAddons/";
    const CheckedFile& product = ReadFile(FileKind::kProduct, "Product.xml");
    const CheckedFile& drivers = ReadFile(FileKind::kDrivers, meta + "DeviceDrivers.xml");
    ReadFile(FileKind::kPortal, meta + "Portal.xml");
    ReadFile(FileKind::kPlatform, meta + "Platform.xml");
    ReadPlugins(product, "Plugins/Plugin", kServer);
    ReadPlugins(drivers, "Driver", kDriver);
    ReadSubPlatforms(product);
    const CheckedFile& installed =
        ReadFile(FileKind::kInstalled, installFolder + "InstalledProducts.xml");
    const CheckedFile& addons = ReadFile(FileKind::kAddonList, "ProductAddons.xml");
    ReadOffered(addons, "Addon", m_product.offeredAddons);
    ReadInstalled(installed, "Addons/Addon", FileKind::kAddon, m_product.addons);
    for (InstalledEntry& addon : m_product.addons) ReadAddonPlugins(addon);
    const CheckedFile& tools = ReadFile(FileKind::kToolList, "ProductTools.xml");
    ReadOffered(tools, "Tool", m_product.offeredTools);
    ReadInstalled(installed, "Tools/Tool", FileKind::kTool, m_product.tools);
    LinkEntries();
  }

  /// Reads the addons' descriptions among the listed names that are not installed.
  void ReadOtherAddons() {
    const std::string folder = m_product.bin + "/TevAddons/";
    for (const std::string& name : m_product.names) {
      const std::size_t slash = name.rfind('/');
      if (name.compare(0, folder.size(), folder) != 0 || slash < folder.size()) continue;
      const std::string id = name.substr(folder.size(), slash - folder.size());
      const bool isDescription = name.compare(slash + 1, std::string::npos, id + ".xml") == 0;
      const bool isKnown =
          m_known.count({FileKind::kAddon, name}) + m_known.count({FileKind::kTool, name}) != 0;
      if (isDescription && !isKnown)
        m_product.otherAddons.push_back(LoadFile(FileKind::kAddon, name));
    }
  }

 private:
  CheckedFile LoadFile(FileKind kind, const std::string& name) const {
    ModelText text = ReadModelText(m_folder + name, m_names.toPath);
    CheckedFile file;
    file.kind = kind;
    file.name = name;
    file.missing = text.missing;
    file.problem = text.problem;
    file.standIn = text.standIn;
    file.standInProblem = text.standInProblem;
    file.isPipe = text.isPipe;
    if (!text.read.empty()) {
      file.readName =
          text.problem.empty() ? name : name.substr(0, name.rfind('/') + 1) + text.standIn;
      file.text = std::move(text.text);
      file.tree = ParseXmlTree(file.text);
    }
    return file;
  }

  /// Reads the file unless it has been read as this kind before.
  const CheckedFile& ReadFile(FileKind kind, const std::string& name) {
    const auto known = m_known.find({kind, name});
    if (known != m_known.end()) return *known->second;
    m_product.files.push_back(LoadFile(kind, name));
    m_known.emplace(std::make_pair(kind, name), &m_product.files.back());
    return m_product.files.back();
  }

  static std::vector<ListEntry> EntriesOf(const CheckedFile& file, const char* path) {
    return file.HasContent() ? SelectList(file.tree.root, path) : std::vector<ListEntry>();
  }

  static std::string Value(const XmlNode* node, const char* attribute) {
    return node == nullptr ? std::string() : node->Value(attribute);
  }

  /// Lists the plugins of a file; `type` is that of the entries, empty: each has its own.
  void ReadPlugins(const CheckedFile& file, const char* path, const std::string& type,
                   InstalledEntry* addon = nullptr) {
    for (const ListEntry& listed : EntriesOf(file, path)) {
      PluginEntry entry;
      entry.file = &file;
      entry.node = listed.node;
      entry.section = listed.section;
      entry.id = Value(listed.node, "ID");
      entry.version = Value(listed.node, "Version");
      entry.type = addon == nullptr ? type : Value(listed.node, "Category");
      entry.addon = addon;
      entry.descriptionFile = &ReadDescription(entry.id);
      m_product.entries.push_back(std::move(entry));
      if (addon != nullptr) addon->plugins.push_back(&m_product.entries.back());
    }
  }

  const CheckedFile& ReadDescription(const std::string& id) {
    std::string name = m_product.bin + "/META_INFO/";
    if (!id.empty()) name += id + "/";
    const CheckedFile& file = ReadFile(FileKind::kPlugin, name + id + ".xml");
    if (file.readName.empty() || m_descriptions.count(&file) != 0) return file;
    Description description;
    description.file = &file;
    description.folder = id;
    if (file.HasContent()) ReadFields(file.tree.root, description);
    m_product.descriptions.push_back(std::move(description));
    m_descriptions.emplace(&file, &m_product.descriptions.back());
    return file;
  }

  static void ReadFields(const XmlNode& root, Description& description) {
    description.type = Number(TextAt(root, "Type"), -1);
    description.id = TextAt(root, "ID");
    description.version = TextAt(root, "Version");
    description.isDistributed = Number(TextAt(root, "IsDistributed"), 0) == 1;
    for (const ListEntry& listed : SelectList(root, "DependencyList/Plugin")) {
      Dependency dependency = ReadDependency(listed);
      dependency.dependentType = Number(Value(listed.node, "DependentType"), 1);
      description.dependencies.push_back(std::move(dependency));
    }
    for (const ListEntry& listed : SelectList(root, "DependencyList/Platform")) {
      Dependency dependency = ReadDependency(listed);
      const XmlAttribute* category =
          listed.node == nullptr ? nullptr : listed.node->Attribute("Category");
      const bool onPlatform = category == nullptr || category->value == "platform";
      dependency.category = onPlatform ? DependencyCategory::kPlatform : DependencyCategory::kOther;
      description.dependencies.push_back(std::move(dependency));
    }
  }

  static Dependency ReadDependency(const ListEntry& listed) {
    Dependency dependency;
    dependency.node = listed.node;
    dependency.section = listed.section;
    dependency.id = Value(listed.node, "ID");
    dependency.version = Value(listed.node, "Version");
    return dependency;
  }

  void ReadSubPlatforms(const CheckedFile& file) {
    for (const ListEntry& listed : EntriesOf(file, "SubPlatforms/SubPlatform")) {
      m_product.subPlatforms.push_back(
          {listed.node, listed.section, Value(listed.node, "ID"), Value(listed.node, "Version")});
    }
  }

  static void ReadOffered(const CheckedFile& file, const char* path,
                          std::deque<CatalogueEntry>& offered) {
    for (const ListEntry& listed : EntriesOf(file, path)) {
      const std::string id = listed.node == nullptr ? std::string() : TextAt(*listed.node, "ID");
      offered.push_back({listed.node, listed.section, id});
    }
  }

  void ReadInstalled(const CheckedFile& file, const char* path, FileKind kind,
                     std::deque<InstalledEntry>& installed) {
    for (const ListEntry& listed : EntriesOf(file, path)) {
      InstalledEntry entry;
      entry.node = listed.node;
      entry.section = listed.section;
      entry.id = Value(listed.node, "ID");
      std::string name = m_product.bin + "/TevAddons/";
      if (!entry.id.empty()) name += entry.id + "/";
      entry.file = &ReadFile(kind, name + entry.id + ".xml");
      installed.push_back(std::move(entry));
    }
  }

  /// The frame follows the list of an addon only when the description has the entry's ID.
  void ReadAddonPlugins(InstalledEntry& addon) {
    if (!addon.file->HasContent() || TextAt(addon.file->tree.root, "ID") != addon.id) return;
    ReadPlugins(*addon.file, "Plugins/Plugin", std::string(), &addon);
  }

  void LinkEntries() {
    for (PluginEntry& entry : m_product.entries) {
      const auto found = m_descriptions.find(entry.descriptionFile);
      if (found == m_descriptions.end()) continue;
      entry.description = found->second;
      found->second->entries.push_back(&entry);
    }
  }

  const std::string m_folder;  // with "/" at the end
  const LocalNames& m_names;
  CheckedProduct& m_product;
  std::map<std::pair<FileKind, std::string>, const CheckedFile*> m_known;
  std::map<const CheckedFile*, Description*> m_descriptions;
};

/// Calls `use` with each file and folder in `folder` and its name, and with those in its folders
/// down to `levels`. A folder's name ends in "/".
template <typename Use>
void VisitFiles(const fs::path& folder, const std::string& prefix, int levels,
                const LocalNames& names, const Use& use) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    const bool isFolder = entry->is_directory(ignored);
    const std::string name =
        prefix + names.fromPath(entry->path().filename()) + (isFolder ? "/" : "");
    use(*entry, name);
    if (isFolder && levels > 1) VisitFiles(entry->path(), name, levels - 1, names, use);
  }
}

template <typename Use>
void VisitProduct(const ProductPlace& place, const LocalNames& names, const Use& use) {
  const fs::path bin = place.folder / names.toPath(place.bin);
  VisitFiles(place.folder, std::string(), 1, names, use);
  VisitFiles(bin, place.bin + "/", 1, names, use);
  VisitFiles(bin / "META_INFO", place.bin + "/META_INFO/", 2, names, use);
  VisitFiles(bin / "TevAddons", place.bin + "/TevAddons/", 2, names, use);
}

std::vector<std::string> ListProduct(const ProductPlace& place, const LocalNames& names) {
  std::vector<std::string> found;
  VisitProduct(place, names, [&](const fs::directory_entry& /*entry*/, const std::string& name) {
    found.push_back(name);
  });
  std::sort(found.begin(), found.end());
  return found;
}

/// Whether the file may have more elements than kMostElementsForFrame.
bool HasManyTags(const fs::directory_entry& file) {
  constexpr std::string_view shortestElement = "<a/>";
  std::error_code error;
  const std::uintmax_t size = file.file_size(error);
  if (error || size / shortestElement.size() <= kMostElementsForFrame) return false;
  std::ifstream stream(file.path(), std::ios::binary);
  std::size_t tags = 0;
  char before = '\0';
  for (std::istreambuf_iterator<char> at(stream), end; at != end; ++at) {
    if (before == '<' && *at != '/') ++tags;
    before = *at;
  }
  return tags > kMostElementsForFrame;
}

/// Which description each plugin of the model comes from.
class KeptDescriptions {
 public:
  explicit KeptDescriptions(const CheckedProduct& product) {
    for (const Description& description : product.descriptions) {
      m_byID.emplace(description.id, &description);
    }
  }

  const Description* Find(const PluginDescription& plugin) const {
    const Description* best = nullptr;
    const auto [first, last] = m_byID.equal_range(plugin.ID);
    for (auto at = first; at != last; ++at) {
      const Description& one = *at->second;
      if (one.version != plugin.Version || one.type != plugin.Type) continue;
      if (IsListedBy(one, plugin.OwnerAddon)) return &one;
      if (best == nullptr) best = &one;
    }
    return best;
  }

 private:
  static bool IsListedBy(const Description& description, const std::string& addon) {
    return std::any_of(description.entries.begin(), description.entries.end(),
                       [&](const PluginEntry* entry) {
                         return addon == (entry->addon == nullptr ? "" : entry->addon->id);
                       });
  }

  std::multimap<std::string, const Description*> m_byID;
};

void LinkModel(CheckedProduct& product) {
  product.graph = MakeStartGraph(product.model);
  product.kept.clear();
  const KeptDescriptions descriptions(product);
  for (const auto* list :
       {&product.model.ServerPluginDescriptions, &product.model.ExePluginDescriptions,
        &product.model.DriverPluginDescriptions}) {
    for (const PluginDescription& plugin : *list) {
      const Description* description = descriptions.Find(plugin);
      if (description != nullptr) product.kept.emplace(plugin.ID, description);
    }
  }
}

}  // namespace

std::optional<ProductPlace> FindProduct(const fs::path& bin, const LocalNames& names) {
  std::error_code error;
  if (!fs::is_directory(bin, error)) return std::nullopt;
  fs::path folder = fs::canonical(bin, error);
  if (error) folder = fs::absolute(bin).lexically_normal();
  return ProductPlace{folder.parent_path(), names.fromPath(folder.filename())};
}

bool MayHoldUpFrame(const ProductPlace& place, const LocalNames& names) {
  bool found = false;
  VisitProduct(place, names, [&](const fs::directory_entry& entry, const std::string& name) {
    const std::string_view text = name;
    const std::string_view extension = text.substr(std::min(text.size(), text.rfind('.')));
    if (found || (extension != ".xml" && extension != ".data")) return;
    std::error_code error;
    found = entry.is_fifo(error) || HasManyTags(entry);
  });
  return found;
}

std::unique_ptr<CheckedProduct> ReadCheckedProduct(const ProductPlace& place,
                                                   const LocalNames& names,
                                                   std::int32_t runningModule) {
  auto product = std::make_unique<CheckedProduct>();
  product->runningModule = runningModule;
  product->names = ListProduct(place, names);
  ProductReader reader(place, names, *product);
  reader.Read();
  reader.ReadOtherAddons();
  product->model = DeriveModel(*product);
  LinkModel(*product);
  return product;
}

void UseModel(CheckedProduct& product, HandedOver handedOver) {
  product.model = std::move(handedOver.model);
  product.addonModels = std::move(handedOver.addons);
  product.toolModels = std::move(handedOver.tools);
  product.fromFrame = true;
  product.mergedAddons.clear();
  for (const AddonModel& addon : product.addonModels) {
    if (addon.Installed && addon.InstalledCompatible) product.mergedAddons.insert(addon.ID);
  }
  LinkModel(product);
}
