#pragma once

#include <filesystem>
#include <memory>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/LibrarySystem.h"
#include "workbench/product/LocalNames.h"

/// Reads a product's libraries. Nothing is loaded; each file is read once, in time and memory in
/// proportion to the files. Not thread-safe.
class PluginLibraryReader {
 public:
  /// The arguments must outlive this. Throws only std::bad_alloc, as Read does.
  PluginLibraryReader(CheckedProduct& product, const std::filesystem::path& productFolder,
                      const LocalNames& names, const LibrarySystem& system);
  PluginLibraryReader(const PluginLibraryReader&) = delete;
  PluginLibraryReader& operator=(const PluginLibraryReader&) = delete;
  ~PluginLibraryReader();

  /// Fills `product.libraries` for each plugin and sub platform that the frame starts, each driver
  /// and each executable plugin with an ID. To be called again when the product's model has
  /// changed: that takes only as long as the change needs.
  void Read();

 private:
  class Reading;

  const std::unique_ptr<Reading> m_reading;
};
