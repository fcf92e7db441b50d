#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// An installed product on disk, in a folder of the test's own: the executable's directory is
/// root/bin/. The folder's path is the same for the whole process, its content new for each test.
class ProductTree {
 public:
  ProductTree();
  ~ProductTree();

  /// The executable's directory, ending in "/", and the path of the executable in it.
  std::string ExeDirectory() const;
  std::string ExePath() const { return ExeDirectory() + "HUB"; }

  /// Writes the file at `path`, relative to root, and its folders. Returns its full path.
  std::string Write(const std::string& path, const std::string& content) const;
  void Remove(const std::string& path) const;

  /// Writes a whole product with server plugins in the words "name:dependency,dependency", sub
  /// platforms in words without a ":", and none of the optional files.
  void Product(const std::string& words) const;

 private:
  std::filesystem::path m_root;
};

/// A whole file of plugin `id` with the given inner elements.
std::string PluginXml(const std::string& id, const std::string& inner = "");
