#include "workbench/product/ModelFiles.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <system_error>

#include "src/model/PluginDescription.h"
#include "workbench/product/ModelText.h"
#include "workbench/product/XmlFile.h"

namespace fs = std::filesystem;

namespace {

constexpr char kProduct[] = "ProductDescription";
constexpr char kPlugin[] = "Plugin";

/// `path` without "..", changed so that it still names the same folder if links are involved.
fs::path Plain(const fs::path& path) {
  fs::path plain = path.lexically_normal();
  if (plain == path) return plain;
  std::error_code error;
  const bool same = fs::equivalent(path.parent_path(), plain.parent_path(), error);
  if (same || error) return plain;
  const fs::path folder = fs::canonical(path.parent_path(), error);
  return error ? plain : folder / path.filename();
}

/// Whether the version has three parts; the frame needs them to decide which addons are compatible.
bool HasThreeParts(const std::string& version) {
  int parts = 0;
  for (std::size_t i = 0; i < version.size(); ++i) {
    if (version[i] != '.' && (i == 0 || version[i - 1] == '.')) ++parts;
  }
  return parts >= 3;
}

/// Reads model files one after the other and keeps a record of each.
class ModelFileReader {
 public:
  explicit ModelFileReader(const LocalNames& names) : m_names(names) {}

  /// The content of one file; `xml` is empty when the file cannot be read.
  struct Document {
    XmlFile xml;
    std::size_t file;  // index of its record
  };

  /// Reads the file that the frame names `local`.
  Document Read(const std::string& local, const std::string& root, bool required,
                const ModelFileEntry& listed = ModelFileEntry()) {
    ModelText text = ReadModelText(local, m_names.toPath);
    Document document = {XmlFile(text.text), m_files.size()};
    ModelFile file;
    file.path = Plain(m_names.toPath(local));
    file.required = required;
    file.root = root;
    file.listed = listed;
    if (text.read.empty()) {
      file.state = text.missing ? ModelFile::State::kMissing : ModelFile::State::kUnreadable;
      file.detail = text.problem + StandInClause(text);
    } else {
      file.read = Plain(text.read);
      file.passedOver = text.problem;
      Judge(file, document.xml);
    }
    m_files.push_back(std::move(file));
    return document;
  }

  /// Whether the file listed as `id` has not been read before; always true without an ID.
  bool IsNew(const std::string& local, const std::string& root, const std::string& id) {
    return id.empty() || m_known.emplace(local, root).second;
  }

  ModelFile& File(const Document& document) { return m_files[document.file]; }
  std::vector<ModelFile> Take() { return std::move(m_files); }

 private:
  static std::string StandInClause(const ModelText& text) {
    return text.standInProblem == "does not exist"
               ? ", and there is no " + text.standIn + " beside it that could stand in"
               : ", and " + text.standIn + " beside it, which could stand in, " +
                     text.standInProblem;
  }

  static void Judge(ModelFile& file, const XmlFile& xml) {
    if (!xml.Problem().empty()) {
      file.state = ModelFile::State::kNotWellFormed;
      file.detail = xml.Problem();
      file.line = xml.ProblemLine();
      return;
    }
    const XmlFile::Root root = xml.RootElement();
    file.line = root.line;
    if (root.name == file.root && root.space.empty()) return;
    file.state = ModelFile::State::kOtherRoot;
    file.detail = root.name == file.root
                      ? "its root is in the namespace " + root.space
                      : "its root is <" + root.name + ">, not <" + file.root + ">";
  }

  const LocalNames& m_names;
  std::vector<ModelFile> m_files;
  std::set<std::pair<std::string, std::string>> m_known;  // local name and root element
};

using Document = ModelFileReader::Document;

/// The `element`s of `section` as the frame reads them. `file`: the file that `xml` was read from.
std::vector<ModelFileEntry> ReadEntries(const XmlFile& xml, const fs::path& file,
                                        const std::string& section, const std::string& element) {
  std::vector<ModelFileEntry> entries;
  for (const XmlListElement& found : ListElements(xml, section, element)) {
    ModelFileEntry entry;
    entry.file = file;
    entry.line = found.line;
    entry.element = element;
    entry.id = xml.Attribute(found.path, "ID", "");
    entry.hidden = found.hidden;
    entries.push_back(std::move(entry));
  }
  return entries;
}

/// Reads the file ID/ID.xml in `folder` for each `element` in `section` of `list`. Calls `then`
/// with each file that was read for the first time and the ID that it is listed by.
template <typename Then>
void FollowList(ModelFileReader& reader, const Document& list, const std::string& section,
                const std::string& element, const std::string& folder, const std::string& root,
                bool required, Then then) {
  for (const ModelFileEntry& entry :
       ReadEntries(list.xml, reader.File(list).read, section, element)) {
    std::string local = folder + entry.id;
    local += "/" + entry.id + ".xml";
    if (!reader.IsNew(local, root, entry.id)) continue;
    const Document document = reader.Read(local, root, required, entry);
    then(document, entry.id);
  }
}

/// Reads the descriptions of the plugins in a list.
void FollowPlugins(ModelFileReader& reader, const Document& list, const std::string& section,
                   const std::string& element, const std::string& folder, bool required) {
  FollowList(reader, list, section, element, folder, kPlugin, required,
             [&](const Document& description, const std::string&) {
               ModelFile& file = reader.File(description);
               if (file.state != ModelFile::State::kGood) return;
               file.heldID = description.xml.Text("/Plugin/ID", "");
             });
}

/// Marks the description of an addon or tool as kOtherID when its ID is not `id`. Returns whether
/// the frame uses the description.
bool CheckID(ModelFileReader& reader, const Document& document, const std::string& id) {
  ModelFile& file = reader.File(document);
  if (file.state != ModelFile::State::kGood) return false;
  const std::string held = document.xml.Text("/" + file.root + "/ID", "");
  if (held == id) return true;
  file.state = ModelFile::State::kOtherID;
  file.detail = "its ID is \"" + held + "\", not \"" + id + "\"";
  return false;
}

/// Version and dependencies of a plugin, from its description.
struct Declared {
  std::string version;
  std::vector<std::pair<std::string, int>> dependencies;  // that order the start, with their lines
};

Declared ReadDeclared(const XmlFile& xml) {
  Declared declared;
  declared.version = xml.Text("/Plugin/Version", "");
  const std::string section = "/Plugin/DependencyList";
  for (const XmlListElement& entry : ListElements(xml, section, kPlugin)) {
    const std::string type = xml.Attribute(entry.path, "DependentType", "");
    if (!type.empty() && std::atoi(type.c_str()) != 1) continue;
    declared.dependencies.emplace_back(xml.Attribute(entry.path, "ID", ""), entry.line);
  }
  for (const XmlListElement& entry : ListElements(xml, section, "Platform")) {
    if (xml.Attribute(entry.path, "Category", "platform") == "platform") continue;
    declared.dependencies.emplace_back(xml.Attribute(entry.path, "ID", ""), entry.line);
  }
  return declared;
}

}  // namespace

std::vector<ModelFile> ReadModelFiles(const fs::path& bin, const LocalNames& names) {
  std::string base = names.fromPath(bin);
  std::replace(base.begin(), base.end(), '\\', '/');
  if (base.empty() || base.back() != '/') base += '/';
  const std::string above = base + "../";
  const std::string meta = base + "META_INFO/";
  const std::string addonFolder = base + "TevAddons/";

  ModelFileReader reader(names);
  const Document product = reader.Read(above + "Product.xml", kProduct, true);
  const Document drivers = reader.Read(meta + "DeviceDrivers.xml", "DAMDrivers", true);
  reader.Read(meta + "Portal.xml", "PortalDescription", true);
  reader.Read(meta + "Platform.xml", "Platform", true);
  FollowPlugins(reader, product, "/ProductDescription/Plugins", kPlugin, meta, true);
  FollowPlugins(reader, drivers, "/DAMDrivers", "Driver", meta, true);

  const std::string installedRoot = "InstalledProductsDescription";
  const Document installed =
      reader.Read(addonFolder + "InstalledProducts.xml", installedRoot, false);
  const bool productRead = !reader.File(product).read.empty();
  if (!productRead || HasThreeParts(product.xml.Text("/ProductDescription/Version", ""))) {
    const Document addons = reader.Read(above + "ProductAddons.xml", "AddonList", false);
    if (!reader.File(addons).read.empty()) {
      FollowList(reader, installed, "/" + installedRoot + "/Addons", "Addon", addonFolder,
                 "AddonDescription", false, [&](const Document& addon, const std::string& id) {
                   if (!CheckID(reader, addon, id)) return;
                   FollowPlugins(reader, addon, "/AddonDescription/Plugins", kPlugin, meta, false);
                 });
    }
  }
  const Document tools = reader.Read(above + "ProductTools.xml", "ToolList", false);
  if (!reader.File(tools).read.empty()) {
    FollowList(reader, installed, "/" + installedRoot + "/Tools", "Tool", addonFolder,
               "ToolDescription", false,
               [&](const Document& tool, const std::string& id) { CheckID(reader, tool, id); });
  }
  return reader.Take();
}

DependencyLines ReadDependencyLines(const std::vector<ModelFile>& files) {
  // Of several descriptions with one ID the frame keeps the one with the greatest version.
  std::map<std::string, std::pair<Declared, fs::path>> kept;
  for (const ModelFile& file : files) {
    const bool isPlugin = file.root == kPlugin && file.listed.element == kPlugin;
    if (!isPlugin || file.state != ModelFile::State::kGood) continue;
    const XmlFile xml(ReadTextAgain(file.read));
    if (std::atoi(xml.Text("/Plugin/Type", "").c_str()) != PluginType::kLibrary) continue;
    Declared declared = ReadDeclared(xml);
    const auto at = kept.find(xml.Text("/Plugin/ID", ""));
    if (at == kept.end()) {
      kept.emplace(xml.Text("/Plugin/ID", ""), std::make_pair(std::move(declared), file.read));
    } else if (declared.version > at->second.first.version) {
      at->second = std::make_pair(std::move(declared), file.read);
    }
  }
  DependencyLines lines;
  for (const auto& [id, plugin] : kept) {
    for (const auto& [other, line] : plugin.first.dependencies) {
      lines.emplace(std::make_pair(id, other), FileLine{plugin.second, line});
    }
  }
  return lines;
}

std::vector<ModelFileEntry> SubPlatformsWithoutID(const std::vector<ModelFile>& files) {
  std::vector<ModelFileEntry> nameless;
  for (const ModelFile& file : files) {
    if (file.root != kProduct || file.state != ModelFile::State::kGood) continue;
    const XmlFile xml(ReadTextAgain(file.read));
    for (const ModelFileEntry& entry :
         ReadEntries(xml, file.read, "/ProductDescription/SubPlatforms", "SubPlatform")) {
      if (entry.id.empty()) nameless.push_back(entry);
    }
  }
  return nameless;
}
