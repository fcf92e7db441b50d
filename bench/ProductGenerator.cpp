#include "bench/ProductGenerator.h"

#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr char kHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

void Write(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream stream;
  stream.exceptions(std::ios::failbit | std::ios::badbit);
  stream.open(file, std::ios::binary);
  stream << kHead << content;
}

std::string MenuItemXml(const std::string& page) {
  std::ostringstream xml;
  const auto field = [&xml](const char* name, const std::string& value) {
    xml << "      <" << name << ">" << value << "</" << name << ">\n";
  };
  xml << "    <MenuItem>\n";
  field("ID", page);
  for (const char* name : {"MenuType", "Level", "SubMenuType"}) field(name, "1");
  for (const char* name : {"NameKey", "TipsKey", "DescriptionKey", "TabNameKey"}) {
    field(name, page + "." + name);
  }
  field("Color", "#3366aa");
  field("SelColor", "#224488");
  for (const char* name : {"Icon", "SelIcon", "TabIcon", "TabSelIcon"}) {
    field(name, "icons/" + page + "." + name + ".png");
  }
  field("OpenType", "1");
  field("Layout", "full");
  field("Url", "/" + page + "/index.html");
  field("ShowType", "1");
  field("MenuState", "1");
  for (const char* name :
       {"ResourcePermissionID", "ConfiguredPermissionID", "ControlPermissionID", "ControlItemID"}) {
    field(name, page + ".permission");
  }
  xml << "    </MenuItem>\n";
  return xml.str();
}

std::string PluginXml(const GeneratedPlugin& plugin, int menuItems) {
  std::ostringstream xml;
  xml << "<Plugin>\n  <Type>2</Type>\n  <ID>" << plugin.id << "</ID>\n  <Name>Plugin " << plugin.id
      << "</Name>\n  <Version>2.7.1</Version>\n  <IsDistributed>1</IsDistributed>\n"
      << "  <DependencyList>\n";
  for (const std::string& other : plugin.dependsOn) {
    xml << "    <Plugin ID=\"" << other << "\" Version=\"2.5.0\" DependentType=\"1\"/>\n";
  }
  xml << "  </DependencyList>\n  <MenuList>\n";
  for (int item = 0; item < menuItems; ++item) {
    xml << MenuItemXml(plugin.id + ".page" + std::to_string(item));
  }
  xml << "  </MenuList>\n</Plugin>\n";
  return xml.str();
}

std::string ProductXml(const std::vector<GeneratedPlugin>& plugins) {
  std::ostringstream xml;
  xml << "<ProductDescription>\n  <Product>NVX</Product>\n  <Version>2.7.1.105</Version>\n"
      << "  <EditionConfig>Generated</EditionConfig>\n  <Plugins>\n";
  for (const GeneratedPlugin& plugin : plugins) {
    xml << "    <Plugin ID=\"" << plugin.id << "\" Version=\"2.7.1\" Lazystart=\"false\"/>\n";
  }
  xml << "  </Plugins>\n</ProductDescription>\n";
  return xml.str();
}

}  // namespace

std::string GeneratedID(std::size_t number) {
  const std::string digits = std::to_string(number);
  return "p" + std::string(digits.size() < 3 ? 3 - digits.size() : 0, '0') + digits + ".server";
}

void WriteProduct(const fs::path& root, const std::vector<GeneratedPlugin>& plugins,
                  int menuItems) {
  fs::remove_all(root);
  const fs::path bin = root / "bin";
  const fs::path meta = bin / "META_INFO";
  Write(root / "Product.xml", ProductXml(plugins));
  Write(root / "ProductAddons.xml", "<AddonList/>\n");
  Write(root / "ProductTools.xml", "<ToolList/>\n");
  Write(bin / "TevAddons" / "InstalledProducts.xml", "<InstalledProductsDescription/>\n");
  Write(meta / "DeviceDrivers.xml", "<DAMDrivers/>\n");
  Write(meta / "Portal.xml", "<PortalDescription/>\n");
  Write(meta / "Platform.xml", "<Platform/>\n");
  for (const GeneratedPlugin& plugin : plugins) {
    Write(meta / plugin.id / (plugin.id + ".xml"), PluginXml(plugin, menuItems));
    if (!plugin.library.empty()) fs::copy_file(plugin.library, bin / (plugin.id + ".dll"));
  }
}

std::uintmax_t XmlBytes(const fs::path& root) {
  std::uintmax_t bytes = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    if (entry.path().extension() == ".xml") bytes += entry.file_size();
  }
  return bytes;
}
