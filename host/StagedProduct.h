#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "workbench/check/ProductReader.h"

/// A product as if an addon were installed: both put together in a folder of its own, which is
/// removed with the object. Model files are copied, other files linked where the system allows it.
///
/// The addon's folder is laid out as that of the executables: TevAddons/ID/ID.xml, META_INFO/...,
/// and libraries. An entry in InstalledProducts.xml is added for each ID that has none. Not
/// thread-safe.
class StagedProduct {
 public:
  /// Throws UsageError when `addon` has no addon, or when the folder cannot be written.
  StagedProduct(const ProductPlace& product, const std::filesystem::path& addon);
  ~StagedProduct() { Remove(); }
  StagedProduct(const StagedProduct&) = delete;
  StagedProduct& operator=(const StagedProduct&) = delete;

  const ProductPlace& Place() const { return m_place; }

  /// The files that come from the addon's folder: where each lies, by its name in the product.
  const std::map<std::string, std::filesystem::path>& AddonFiles() const { return m_addonFiles; }

  /// Removes the folder, before a process that does not destroy the object ends.
  void Remove() const;

 private:
  void AddFolder(const std::filesystem::path& from, const std::string& name, bool ofAddon);
  void AddFile(const std::filesystem::path& from, const std::string& name, bool ofAddon);
  void Install(const std::string& id) const;

  std::filesystem::path m_root;
  ProductPlace m_place;
  std::map<std::string, std::filesystem::path> m_addonFiles;
};
