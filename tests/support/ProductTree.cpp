#include "tests/support/ProductTree.h"

#include <fstream>
#include <random>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// The same folder for the whole process, since the frame keeps the executable's directory.
const fs::path& ProcessFolder() {
  static const fs::path folder = [] {
    std::random_device random;
    std::ostringstream name;
    name << "tevframe-" << std::hex << random() << random();
    return fs::temp_directory_path() / name.str();
  }();
  return folder;
}

std::string DependencyXml(const std::string& dependencies) {
  std::string xml;
  std::istringstream list(dependencies);
  for (std::string id; std::getline(list, id, ',');) xml += "<Plugin ID='" + id + "'/>";
  return "<DependencyList>" + xml + "</DependencyList>";
}

}  // namespace

ProductTree::ProductTree() : m_root(ProcessFolder()) {
  fs::remove_all(m_root);
  fs::create_directories(m_root / "bin" / "META_INFO");
}

ProductTree::~ProductTree() {
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
}

std::string ProductTree::ExeDirectory() const {
  return (m_root / "bin").generic_string() + "/";
}

std::string ProductTree::Write(const std::string& path, const std::string& content) const {
  const fs::path file = m_root / path;
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
  return file.generic_string();
}

void ProductTree::Remove(const std::string& path) const {
  fs::remove_all(m_root / path);
}

void ProductTree::Product(const std::string& words) const {
  std::string plugins;
  std::string subPlatforms;
  std::istringstream list(words);
  for (std::string word; list >> word;) {
    const std::size_t colon = word.find(':');
    const std::string id = word.substr(0, colon);
    if (colon == std::string::npos) {
      subPlatforms += "<SubPlatform ID='" + id + "'/>";
      continue;
    }
    plugins += "<Plugin ID='" + id + "'/>";
    Write("bin/META_INFO/" + id + "/" + id + ".xml",
          PluginXml(id, DependencyXml(word.substr(colon + 1))));
  }
  Write("Product.xml",
        "<ProductDescription><Product>NVX</Product><Version>2.6.1.15</Version>"
        "<Plugins>" +
            plugins + "</Plugins><SubPlatforms>" + subPlatforms +
            "</SubPlatforms></ProductDescription>");
  Write("bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers/>");
  Write("bin/META_INFO/Portal.xml", "<PortalDescription/>");
  Write("bin/META_INFO/Platform.xml", "<Platform/>");
}

std::string PluginXml(const std::string& id, const std::string& inner) {
  return "<Plugin><Type>2</Type><ID>" + id + "</ID><Name>" + id + "</Name><Version>1.0</Version>" +
         inner + "</Plugin>";
}
