#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "src/model/AddonModel.h"
#include "src/model/ProductModel.h"
#include "workbench/product/StartGraph.h"
#include "workbench/product/XmlTree.h"

// A product as rules see it: the model files as they lie on disk, element by element, beside what
// the frame makes of them. Names of files are relative to the product's folder (that of
// Product.xml), with "/" between names.

enum class FileKind {
  kProduct,    // Product.xml
  kDrivers,    // DeviceDrivers.xml
  kPortal,     // Portal.xml
  kPlatform,   // Platform.xml
  kPlugin,     // META_INFO/ID/ID.xml
  kInstalled,  // TevAddons/InstalledProducts.xml
  kAddonList,  // ProductAddons.xml
  kToolList,   // ProductTools.xml
  kAddon,      // TevAddons/ID/ID.xml of an addon
  kTool        // of a tool
};

/// The running module that keeps only plugins with <IsDistributed>1</IsDistributed>.
constexpr std::int32_t kDistributedModule = 2;

/// The name that the root element of such a file must have: "ProductDescription".
const char* RootName(FileKind kind);

/// The frame's time for a file grows with the square of the number of its elements. With this many
/// in one file, it takes seconds; with more, the frame is not asked.
constexpr std::size_t kMostElementsForFrame = 10'000;

/// One model file that the frame asks for.
struct CheckedFile {
  FileKind kind = FileKind::kProduct;
  std::string name;      // of the file that the frame asks for
  std::string readName;  // of the file that is read: the same, or the .data file that stands in;
                         // empty when neither can be read
  bool missing = false;  // the file asked for does not exist
  std::string problem;   // why it cannot be read: "is empty"; empty when it can
  std::string standIn;   // the .data file's name, when the file itself cannot be read
  std::string standInProblem;  // why that cannot be read either; empty when it can
  bool isPipe = false;         // it or its .data file: the frame waits for a writer
  std::string text;            // what is read, without trailing line feeds
  XmlTree tree;

  /// How many elements the frame finds in it.
  std::size_t ElementCount() const;

  /// Whether the frame finds elements in it: readable, well-formed, the right root, no namespace.
  bool HasContent() const {
    return tree.wellFormed && tree.root.name == RootName(kind) && tree.root.space.empty();
  }
};

struct Description;
struct InstalledEntry;

/// An entry that lists a plugin: of Product.xml, of DeviceDrivers.xml, or of an addon.
struct PluginEntry {
  const CheckedFile* file = nullptr;
  const XmlNode* node = nullptr;     // null: the frame counts the entry and reads none
  const XmlNode* section = nullptr;  // the list; the second section when `node` is null
  std::string id;
  std::string version;
  std::string type;                          // "server", "dam_driver", or an addon's Category
  const InstalledEntry* addon = nullptr;     // that lists the plugin; null for the product's own
  const Description* description = nullptr;  // null when its file cannot be read
  const CheckedFile* descriptionFile = nullptr;  // readable or not; null without an ID
};

/// A dependency as its description has it.
struct Dependency {
  const XmlNode* node = nullptr;  // null: counted and not read, because of a second section
  const XmlNode* section = nullptr;
  std::string id;
  std::string version;
  std::int32_t category = 1;  // DependencyCategory
  std::int32_t dependentType = 1;

  /// Whether the frame waits for the plugin of that ID, if there is one.
  bool OrdersTheStart() const { return category != 2 && dependentType == 1; }
};

/// A plugin's description file that can be read, and the values that the frame reads from it.
struct Description {
  const CheckedFile* file = nullptr;
  std::string folder;  // the ID by which it is listed and its folder and file are named
  std::int32_t type = -1;
  std::string id;
  std::string version;
  bool isDistributed = false;
  std::vector<Dependency> dependencies;
  std::vector<const PluginEntry*> entries;  // that list it, in the order in which they are read
};

struct SubPlatform {
  const XmlNode* node = nullptr;  // null: counted and not read
  const XmlNode* section = nullptr;
  std::string id;
  std::string version;
};

/// An addon or tool in InstalledProducts.xml.
struct InstalledEntry {
  const XmlNode* node = nullptr;  // null: counted and not read
  const XmlNode* section = nullptr;
  std::string id;
  const CheckedFile* file = nullptr;        // its description, readable or not; null without an ID
  std::vector<const PluginEntry*> plugins;  // that an addon's description lists
};

/// An addon or tool in ProductAddons.xml or ProductTools.xml.
struct CatalogueEntry {
  const XmlNode* node = nullptr;
  const XmlNode* section = nullptr;
  std::string id;
};

/// A package that InstalledProducts.xml names. The frame hands the names on and looks for no file,
/// so the folder of a package is not known: `tried` has those where packages are put.
struct NamedPackage {
  std::string what;   // by which it is named: "ClientPackageName", "<Path> of <ClientPackage>"
  std::string owner;  // ID of the addon or tool; empty for the product's own
  std::string name;   // as the file has it
  TextPlace place;
  std::string checksum;  // its MD5 as the file has it; empty when the file has none
  TextPlace checksumPlace;
  std::vector<std::string> tried;  // where it may lie; empty when its name leads elsewhere
  std::string file;                // the first of these that exists; empty for none
  std::string md5;  // of that file, if `checksum` is not empty and the file can be read
};

/// What a plugin's library, or an executable plugin's program, has; see PluginLibrary.h.
struct PluginLibrary;

/// A product on disk and what the frame makes of it.
///
/// Pointers lead into its own deques: it is neither copied nor moved. Reading fills it; then it is
/// constant and may be used on several threads.
struct CheckedProduct {
  CheckedProduct() = default;
  CheckedProduct(const CheckedProduct&) = delete;
  CheckedProduct& operator=(const CheckedProduct&) = delete;

  // What lies on disk.
  std::string bin;                  // the name of the folder of the executables: "bin"
  std::deque<CheckedFile> files;    // each once, in the order in which the frame reads them
  std::deque<PluginEntry> entries;  // of the product, the drivers, then of the addons
  std::deque<Description> descriptions;
  std::deque<SubPlatform> subPlatforms;
  std::deque<InstalledEntry> addons;
  std::deque<InstalledEntry> tools;
  std::deque<CatalogueEntry> offeredAddons;
  std::deque<CatalogueEntry> offeredTools;
  std::vector<NamedPackage> packages;   // empty when they were not looked for
  std::deque<CheckedFile> otherAddons;  // descriptions in TevAddons that the frame does not read

  /// Files and folders, sorted: in the product's folder, in the folder of the executables, and two
  /// levels deep in META_INFO and TevAddons. A folder's name ends in "/".
  std::vector<std::string> names;

  // What the frame makes of it.
  std::int32_t runningModule = 1;

  /// The model as the frame hands it over to the platform: merged with the addons, trimmed, sorted.
  /// When the frame refuses the product or is not asked, the model that it would hand over if the
  /// files that it misses were not listed, without addons.
  ProductModel model;
  bool fromFrame = false;               // `model`, `addonModels` and `toolModels` are the frame's
  std::vector<AddonModel> addonModels;  // empty unless they are
  std::set<std::string> mergedAddons;   // IDs of those whose plugins the frame adds
  std::vector<ToolModel> toolModels;
  StartGraph graph;  // of `model`

  /// For each ID that is started, or listed as an executable or driver, the description that the
  /// frame keeps of all with this ID.
  std::map<std::string, const Description*> kept;

  /// The plugins' libraries and programs, by the plugin's ID; empty when they were not read.
  std::map<std::string, std::shared_ptr<const PluginLibrary>> libraries;

  /// The first file of a kind; never null for the kinds of which there is one.
  const CheckedFile& File(FileKind kind) const;

  /// Whether the frame starts a plugin or sub platform of this ID.
  bool Starts(const std::string& id) const;

  /// The description that the frame keeps of all with this ID; null for none.
  const Description* Kept(const std::string& id) const;

  /// Whether the frame adds the addon's plugins to the product; false when it refuses the product
  /// or is not asked.
  bool Merges(const InstalledEntry& addon) const;

  /// Whether the frame takes long to read it or does not end: a file is a pipe, or has more
  /// elements than kMostElementsForFrame.
  bool HoldsUpFrame() const;

  /// Whether a file or folder of this name exists; a folder's name ends in "/".
  bool Exists(const std::string& name) const;
};
