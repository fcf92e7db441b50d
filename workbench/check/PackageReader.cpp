#include "workbench/check/PackageReader.h"

#include <algorithm>
#include <array>
#include <boost/uuid/detail/md5.hpp>
#include <cstdio>
#include <fstream>
#include <map>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// The MD5 of a file's bytes in hexadecimal digits; empty when they cannot be read.
std::string Md5OfFile(const fs::path& file) {
  std::error_code error;
  if (!fs::is_regular_file(file, error)) return std::string();  // a pipe would block
  std::ifstream stream(file, std::ios::binary);
  if (!stream) return std::string();
  boost::uuids::detail::md5 md5;
  std::vector<char> bytes(std::size_t{1} << 16U);
  while (stream) {
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    md5.process_bytes(bytes.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (stream.bad()) return std::string();
  boost::uuids::detail::md5::digest_type digest;
  md5.get_digest(digest);
  std::string text;
  for (const unsigned int word : digest) {  // numbers, whatever the machine's order of bytes
    std::array<char, 9> digits = {};
    std::snprintf(digits.data(), digits.size(), "%08x", word);
    text += digits.data();
  }
  return text;
}

/// Whether a name leads to a file in the folder that it is appended to.
bool StaysInside(const std::string& name) {
  if (name.empty() || name.front() == '/' || name.find(':') != std::string::npos) return false;
  return ("/" + name + "/").find("/../") == std::string::npos;
}

class PackageReader {
 public:
  PackageReader(CheckedProduct& product, const ProductPlace& place, const LocalNames& names)
      : m_product(product), m_folder(names.fromPath(place.folder) + "/"), m_names(names) {}

  void Read() {
    const CheckedFile& file = m_product.File(FileKind::kInstalled);
    if (!file.HasContent()) return;
    AddElement(file.tree.root, "ClientPackage");
    AddElement(file.tree.root, "OfflineInstallPackage");
    for (const InstalledEntry& addon : m_product.addons) {
      AddAttribute(addon, "ClientPackageName", "ClientPackageMD5");
      AddAttribute(addon, "AddonPackageName", nullptr);
    }
    for (const InstalledEntry& tool : m_product.tools) {
      AddAttribute(tool, "ClientPackageName", "ClientPackageMD5");
    }
  }

 private:
  void AddElement(const XmlNode& root, const std::string& element) {
    const auto path = Select(root, element + "/Path");
    if (path.empty() || path.front()->text.empty()) return;
    NamedPackage package;
    package.what = "<Path> of <" + element + ">";
    package.name = path.front()->text;
    package.place = path.front()->place;
    const auto md5 = Select(root, element + "/MD5");
    if (!md5.empty()) {
      package.checksum = md5.front()->text;
      package.checksumPlace = md5.front()->place;
    }
    Add(std::move(package));
  }

  void AddAttribute(const InstalledEntry& entry, const char* attribute, const char* checksum) {
    if (entry.node == nullptr || entry.node->Value(attribute).empty()) return;
    NamedPackage package;
    package.what = attribute;
    package.owner = entry.id;
    package.name = entry.node->Value(attribute);
    package.place = entry.node->Attribute(attribute)->place;
    const XmlAttribute* md5 = checksum == nullptr ? nullptr : entry.node->Attribute(checksum);
    if (md5 != nullptr) {
      package.checksum = md5->value;
      package.checksumPlace = md5->place;
    }
    Add(std::move(package));
  }

  void Add(NamedPackage package) {
    std::string name = package.name;
    std::replace(name.begin(), name.end(), '\\', '/');
    if (StaysInside(name)) {
      const std::string installFolder = m_product.bin + "/TevAddons/";
      if (StaysInside(package.owner)) {
        package.tried.push_back(installFolder + package.owner + "/" + name);
      }
      package.tried.push_back(installFolder + name);
      package.tried.push_back(m_product.bin + "/" + name);
      package.tried.push_back(name);
    }
    const auto found = std::find_if(package.tried.begin(), package.tried.end(),
                                    [&](const std::string& file) { return Exists(file); });
    if (found != package.tried.end()) {
      package.file = *found;
      if (!package.checksum.empty()) package.md5 = Md5Of(*found);
    }
    m_product.packages.push_back(std::move(package));
  }

  bool Exists(const std::string& name) const {
    std::error_code error;
    return fs::exists(m_names.toPath(m_folder + name), error);
  }

  const std::string& Md5Of(const std::string& name) {
    const auto [known, isNew] = m_md5.emplace(name, std::string());
    if (isNew) known->second = Md5OfFile(m_names.toPath(m_folder + name));
    return known->second;
  }

  CheckedProduct& m_product;
  const std::string m_folder;  // of the product, with "/" at the end
  const LocalNames& m_names;
  std::map<std::string, std::string> m_md5;  // by the file's name
};

}  // namespace

void ReadPackages(CheckedProduct& product, const ProductPlace& place, const LocalNames& names) {
  PackageReader(product, place, names).Read();
}
