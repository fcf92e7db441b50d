#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// An installed product on disk; the executable's directory is root/bin/. The folder's path is the
/// same for the whole process; each test starts with an empty folder.
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

  /// Writes a whole product without the optional files. `words` are separated by blanks: a server
  /// plugin is "name:dependency,dependency", a sub platform a word without ":".
  void Product(const std::string& words) const;

 private:
  std::filesystem::path m_root;
};

/// The description of plugin `id`, with `inner` as further elements.
std::string PluginXml(const std::string& id, const std::string& inner = "");
