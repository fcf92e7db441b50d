#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/InstalledAddons.h"
#include "workbench/check/ProductReader.h"
#include "workbench/check/RuleFinding.h"

/// A product as if an addon were installed: both put together in a folder of its own, which is
/// removed with the object. Folders are made anew and model files are copied; other files, and
/// links to folders, become links.
///
/// The addon's folder has TevAddons/ID/ID.xml, META_INFO/... and libraries. InstalledProducts.xml
/// gets an entry for each ID; one in the addon's folder is not used. Not thread-safe.
class StagedProduct {
 public:
  /// Throws UsageError when `addon` has no addon, or when the folder cannot be written.
  StagedProduct(const ProductPlace& product, const std::filesystem::path& addon);
  ~StagedProduct() { Remove(); }
  StagedProduct(const StagedProduct&) = delete;
  StagedProduct& operator=(const StagedProduct&) = delete;

  const ProductPlace& Place() const { return m_place; }

  /// The files, and the links to folders, that come from the addon's folder: where each lies, by
  /// its name in the product.
  const std::map<std::string, std::filesystem::path>& AddonFiles() const { return m_addonFiles; }

  /// The name in the product of the list of installed addons, or of the .data file in its place.
  const std::string& InstalledFile() const { return m_installedFile; }

  /// Its text in the product; empty when there is no such file.
  const std::string& InstalledText() const { return m_installed->Before(); }

  /// Changes places in the staged list of installed addons to those in the product's list. A
  /// finding in an entry that the product does not have gets the file as a whole, a related place
  /// there is removed.
  void UsePlacesOfProduct(RuleFindings& findings) const;

  /// Removes the folder, before a process that does not destroy the object ends.
  void Remove() const;

 private:
  void AddBeside(const ProductPlace& product);
  void AddFolder(const std::filesystem::path& from, const std::string& name, bool ofAddon);
  void AddFile(const std::filesystem::path& from, const std::string& name, bool ofAddon);
  void Install(const std::vector<std::string>& ids);

  std::filesystem::path m_root;
  ProductPlace m_place;
  std::map<std::string, std::filesystem::path> m_addonFiles;
  std::string m_installedFile;
  std::optional<InstalledAddons> m_installed;  // set by the constructor
};
