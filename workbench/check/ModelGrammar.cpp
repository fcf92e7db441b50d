#include "workbench/check/ModelGrammar.h"

#include <algorithm>

#include "workbench/check/CheckedProduct.h"

namespace {

constexpr ElementRole kSingle = ElementRole::kSingle;
constexpr ElementRole kSection = ElementRole::kSection;
constexpr ElementRole kEntry = ElementRole::kEntry;
constexpr ValueKind kNone = ValueKind::kNone;
constexpr bool kRequired = true;
constexpr bool kOptional = false;

template <typename T, std::size_t N>
constexpr TablePart<T> All(const T (&table)[N]) {
  return {table, N};
}

constexpr ElementSpec Text(const char* name, const char* absent = "") {
  return {name, kSingle, ValueKind::kText, absent};
}

constexpr ElementSpec Id(const char* name, bool required = kOptional) {
  return {name, kSingle, ValueKind::kId, "", required};
}

constexpr ElementSpec Version(const char* name, const char* absent = "",
                              bool required = kOptional) {
  return {name, kSingle, ValueKind::kVersion, absent, required};
}

constexpr ElementSpec Number(const char* name, const char* absent, bool required = kOptional) {
  return {name, kSingle, ValueKind::kNumber, absent, required};
}

constexpr ElementSpec Flag(const char* name) {
  return {name, kSingle, ValueKind::kFlag, "0"};
}

constexpr ElementSpec Group(const char* name, TablePart<ElementSpec> children) {
  return {name, kSingle, kNone, "", kOptional, {}, children};
}

constexpr ElementSpec Section(const char* name, TablePart<ElementSpec> entries) {
  return {name, kSection, kNone, "", kOptional, {}, entries};
}

constexpr ElementSpec Entry(const char* name, TablePart<AttributeSpec> attributes,
                            TablePart<ElementSpec> children = {}) {
  return {name, kEntry, kNone, "", kOptional, attributes, children};
}

constexpr AttributeSpec kId = {"ID", ValueKind::kId, "", kRequired};
constexpr AttributeSpec kVersion = {"Version", ValueKind::kVersion};

constexpr AttributeSpec kIdOnly[] = {kId};
constexpr AttributeSpec kIdAndVersion[] = {kId, kVersion};

// Product.xml
constexpr AttributeSpec kPluginAttributes[] = {kId, kVersion, {"Lazystart", ValueKind::kTrue}};
constexpr ElementSpec kLanguages[] = {Entry("Language", All(kIdOnly))};
constexpr ElementSpec kPlugins[] = {Entry("Plugin", All(kPluginAttributes))};
constexpr ElementSpec kSubPlatforms[] = {Entry("SubPlatform", All(kIdAndVersion))};
constexpr ElementSpec kProduct[] = {Id("Product", kRequired),
                                    Text("ProductLogo"),
                                    Version("Version", "", kRequired),
                                    Text("EditionConfig"),
                                    Text("FnoodPath"),
                                    {"Platform", kSingle, kNone, "", kOptional, All(kIdAndVersion)},
                                    Section("Languages", All(kLanguages)),
                                    Section("Plugins", All(kPlugins)),
                                    Section("SubPlatforms", All(kSubPlatforms))};

// DeviceDrivers.xml
constexpr ElementSpec kDrivers[] = {Entry("Driver", All(kIdAndVersion))};

// Portal.xml
constexpr AttributeSpec kItem[] = {
    {"Type", ValueKind::kText}, {"ID", ValueKind::kText}, {"RefID", ValueKind::kText}};
constexpr AttributeSpec kNamedItem[] = {kItem[0], kItem[1], kItem[2], {"Name", ValueKind::kText}};
constexpr ElementSpec kNestedItems[1] = {Entry("MenuItem", All(kItem), {kNestedItems, 1})};
constexpr ElementSpec kNavigationItems[] = {Entry("MenuItem", All(kNamedItem), All(kNestedItems))};
constexpr ElementSpec kSceneItems[] = {Entry("MenuItem", All(kItem), All(kNestedItems))};
constexpr ElementSpec kItemsOfScene[] = {Entry("MenuItem", All(kItem))};
constexpr ElementSpec kSceneMode[] = {Number("Type", "-1"),
                                      Section("SceneMenuList", All(kItemsOfScene))};
constexpr ElementSpec kSceneModes[] = {Entry("SceneMode", {}, All(kSceneMode))};
constexpr ElementSpec kPortalMode[] = {Number("Type", "-1"),
                                       Section("SceneModeList", All(kSceneModes))};
constexpr ElementSpec kPortalModes[] = {Entry("PortalMode", {}, All(kPortalMode))};
constexpr ElementSpec kPortal[] = {Section("FullNavigationMenuList", All(kNavigationItems)),
                                   Section("FullSceneMenuList", All(kSceneItems)),
                                   Section("PortalModeList", All(kPortalModes))};

// Platform.xml
constexpr ElementSpec kPlatform[] = {Version("Version"), Text("PlatformDBType"),
                                     Text("OneChannelForOneCamera")};

// The description of a plugin
constexpr AttributeSpec kPluginDependency[] = {
    kId, kVersion, {"DependentType", ValueKind::kNumber, "1"}};
constexpr AttributeSpec kPlatformDependency[] = {
    kId, kVersion, {"Category", ValueKind::kText, "platform"}};
constexpr ElementSpec kDependencies[] = {Entry("Plugin", All(kPluginDependency)),
                                         Entry("Platform", All(kPlatformDependency))};
constexpr ElementSpec kMenuItem[] = {Id("ID", kRequired),
                                     Number("MenuType", "-1"),
                                     Number("Level", "-1"),
                                     Number("SubMenuType", "-1"),
                                     Text("NameKey"),
                                     Text("TipsKey"),
                                     Text("DescriptionKey"),
                                     Text("TabNameKey"),
                                     Text("Color"),
                                     Text("SelColor"),
                                     Text("Icon"),
                                     Text("SelIcon"),
                                     Text("TabIcon"),
                                     Text("TabSelIcon"),
                                     Number("OpenType", "-1"),
                                     Text("Layout"),
                                     Text("Url"),
                                     Number("ShowType", "-1"),
                                     Number("MenuState", "-1"),
                                     Text("ResourcePermissionID", "-1"),
                                     Text("ConfiguredPermissionID", "-1"),
                                     Text("ControlPermissionID", "-1"),
                                     Text("ControlItemID", "-1")};
constexpr ElementSpec kMenuItems[] = {Entry("MenuItem", {}, All(kMenuItem))};
constexpr ElementSpec kPlugin[] = {Number("Type", "-1", kRequired),
                                   Id("ID", kRequired),
                                   Text("Name"),
                                   Version("Version"),
                                   Flag("IsDistributed"),
                                   Section("DependencyList", All(kDependencies)),
                                   Section("MenuList", All(kMenuItems))};

// InstalledProducts.xml
constexpr AttributeSpec kInstalledAddon[] = {kId,
                                             kVersion,
                                             {"ClientPackageName", ValueKind::kText},
                                             {"LastModifyTime", ValueKind::kText},
                                             {"ClientPackageMD5", ValueKind::kText},
                                             {"AddonPackageName", ValueKind::kText}};
constexpr ElementSpec kOfflinePackage[] = {Text("Path")};
constexpr ElementSpec kClientPackage[] = {Text("Path"), Text("MD5")};
constexpr ElementSpec kInstalledAddons[] = {Entry("Addon", All(kInstalledAddon))};
constexpr ElementSpec kInstalledTools[] = {Entry("Tool", {kInstalledAddon, 5})};
constexpr ElementSpec kInstalled[] = {Group("OfflineInstallPackage", All(kOfflinePackage)),
                                      Group("ClientPackage", All(kClientPackage)),
                                      Section("Addons", All(kInstalledAddons)),
                                      Section("Tools", All(kInstalledTools))};

// Addons and tools, in the catalogues and in their descriptions
constexpr ElementSpec kApplication[] = {
    Id("ID", kRequired),           Text("Icon"),       Text("NameKey"),
    Text("FunctionalOverviewKey"), Text("InstallUDF"), Text("FunctionUDF"),
    Text("RelatedApplicationID")};
constexpr ElementSpec kApplications[] = {Entry("Application", {}, All(kApplication))};
constexpr ElementSpec kCatalogueAddon[] = {Id("ID", kRequired),
                                           Text("Icon"),
                                           Text("NameKey"),
                                           Text("FunctionalOverviewKey"),
                                           Version("Version"),
                                           Number("PackageSize", "0"),
                                           Section("ApplicationList", All(kApplications))};
constexpr ElementSpec kCatalogueAddons[] = {Entry("Addon", {}, All(kCatalogueAddon))};
constexpr ElementSpec kCatalogueTool[] = {Id("ID", kRequired), Text("Icon"),
                                          Text("NameKey"),     Text("FunctionalOverviewKey"),
                                          Version("Version"),  Number("PackageSize", "0"),
                                          Text("Source"),      Flag("ServerSide")};
constexpr ElementSpec kCatalogueTools[] = {Entry("Tool", {}, All(kCatalogueTool))};

constexpr ElementSpec kProductOfAddon[] = {{"ProductLogo", kSingle, ValueKind::kId, "", kRequired},
                                           Version("MinVersion"),
                                           Version("MaxVersion")};
constexpr ElementSpec kProductsOfAddon[] = {Entry("Product", {}, All(kProductOfAddon))};
constexpr ElementSpec kReplaced[] = {Id("ID", kRequired), Version("MinVersion"),
                                     Version("MaxVersion")};
constexpr AttributeSpec kAddonPlugin[] = {
    {"Category", ValueKind::kId, "", kRequired}, kId, kVersion};
constexpr ElementSpec kAddonPlugins[] = {Entry("Plugin", All(kAddonPlugin))};
constexpr ElementSpec kServices[] = {Entry("Service", All(kIdAndVersion))};
constexpr ElementSpec kAddon[] = {Id("ID", kRequired),
                                  Text("Icon"),
                                  Text("NameKey"),
                                  Text("FunctionalOverviewKey"),
                                  Version("Version"),
                                  Version("CompatibleVersion", "1.0.0"),
                                  Text("Source"),
                                  Flag("HaveClientPackage"),
                                  Number("PublishingType", "0"),
                                  Group("ReplaceAddon", All(kReplaced)),
                                  Flag("IsIndependent"),
                                  Flag("IsDistributed"),
                                  Section("SupportProducts", All(kProductsOfAddon)),
                                  Section("ApplicationList", All(kApplications)),
                                  Section("Plugins", All(kAddonPlugins)),
                                  Section("Services", All(kServices))};

// Of a tool's supported products the first MinVersion and MaxVersion are read, whatever product
// they belong to; ProductLogo is not read.
constexpr ElementSpec kTool[] = {Id("ID", kRequired),
                                 Text("Icon"),
                                 Text("NameKey"),
                                 Text("FunctionalOverviewKey"),
                                 Version("Version"),
                                 Text("Source"),
                                 Flag("HaveClientPackage"),
                                 Flag("ServerSide"),
                                 Section("SupportProducts", All(kProductsOfAddon))};

// In the order of FileKind.
constexpr ElementSpec kRoots[] = {
    Group("ProductDescription", All(kProduct)),
    Group("DAMDrivers", All(kDrivers)),
    Group("PortalDescription", All(kPortal)),
    Group("Platform", All(kPlatform)),
    Group("Plugin", All(kPlugin)),
    Group("InstalledProductsDescription", All(kInstalled)),
    Group("AddonList", All(kCatalogueAddons)),
    Group("ToolList", All(kCatalogueTools)),
    Group("AddonDescription", All(kAddon)),
    Group("ToolDescription", All(kTool)),
};
static_assert(static_cast<std::size_t>(FileKind::kTool) + 1 == sizeof kRoots / sizeof kRoots[0]);

template <typename Spec>
const Spec* Find(const TablePart<Spec>& specs, std::string_view name) {
  const Spec* found =
      std::find_if(specs.begin(), specs.end(), [&](const Spec& one) { return one.name == name; });
  return found == specs.end() ? nullptr : found;
}

template <typename Spec>
std::vector<std::string> Names(const TablePart<Spec>& specs) {
  std::vector<std::string> names;
  for (const Spec& spec : specs) names.emplace_back(spec.name);
  return names;
}

/// Calls `visit(path, spec)` for every element below `spec`, parents first. An element that may
/// stand in itself is visited once.
template <typename Visit>
void ForEach(const ElementSpec& spec, const std::string& path, const Visit& visit) {
  for (const ElementSpec& child : spec.children) {
    const std::string below = path.empty() ? child.name : path + "/" + child.name;
    visit(below, child);
    if (child.children.first != &child) ForEach(child, below, visit);
  }
}

void SortOnce(std::vector<std::string>& names) {
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
}

}  // namespace

const AttributeSpec* ElementSpec::Attribute(std::string_view attribute) const {
  return Find(attributes, attribute);
}

const ElementSpec* ElementSpec::Child(std::string_view element) const {
  return Find(children, element);
}

std::vector<std::string> ElementSpec::AttributeNames() const {
  return Names(attributes);
}

std::vector<std::string> ElementSpec::ChildNames() const {
  return Names(children);
}

const ElementSpec& Grammar(FileKind kind) {
  return kRoots[static_cast<std::size_t>(kind)];
}

const ElementSpec* SpecAt(FileKind kind, std::string_view path) {
  const ElementSpec* spec = &Grammar(kind);
  while (spec != nullptr && !path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    spec = spec->Child(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return spec;
}

std::vector<std::string> ElementNames(FileKind kind) {
  std::vector<std::string> names;
  ForEach(Grammar(kind), "",
          [&](const std::string&, const ElementSpec& spec) { names.emplace_back(spec.name); });
  SortOnce(names);
  return names;
}

std::vector<std::string> AttributeNames(FileKind kind) {
  std::vector<std::string> names;
  ForEach(Grammar(kind), "", [&](const std::string&, const ElementSpec& spec) {
    for (const AttributeSpec& attribute : spec.attributes) names.emplace_back(attribute.name);
  });
  SortOnce(names);
  return names;
}

std::vector<std::string> PathsOf(FileKind kind, std::string_view element) {
  std::vector<std::string> paths;
  ForEach(Grammar(kind), "", [&](const std::string& path, const ElementSpec& spec) {
    if (spec.name == element) paths.push_back(path);
  });
  return paths;
}

std::vector<std::string> AllPaths(FileKind kind) {
  std::vector<std::string> paths;
  ForEach(Grammar(kind), "",
          [&](const std::string& path, const ElementSpec&) { paths.push_back(path); });
  return paths;
}
