#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

/// One server plugin of a generated product.
struct GeneratedPlugin {
  std::string id;
  std::vector<std::string> dependsOn;
  std::filesystem::path library;  // copied to bin/<id>.dll; empty: no library
};

/// "p000.server", "p001.server", ...: the ID of plugin `number`.
std::string GeneratedID(std::size_t number);

/// Replaces the folder `root` by a whole product: a description for each of `plugins`, with
/// `menuItems` menu items whose fields all have a value, and the optional files without entries.
/// Throws std::filesystem::filesystem_error or std::ios_base::failure.
void WriteProduct(const std::filesystem::path& root, const std::vector<GeneratedPlugin>& plugins,
                  int menuItems);

/// How many bytes the XML files below `root` have; the frame reads all those of a generated
/// product.
std::uintmax_t XmlBytes(const std::filesystem::path& root);
