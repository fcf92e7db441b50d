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

/// "p000.server", "p001.server", ...: the name of a product's plugin number `number`.
std::string GeneratedID(std::size_t number);

/// Writes a whole product below `root`, in place of what is there: a description for each of
/// `plugins`, each with `menuItems` menu items of which every field has a value, and every optional
/// file without an entry. Throws std::filesystem::filesystem_error or std::ios_base::failure.
void WriteProduct(const std::filesystem::path& root, const std::vector<GeneratedPlugin>& plugins,
                  int menuItems);

/// How many bytes of XML lie below `root`: what the frame reads of a generated product.
std::uintmax_t XmlBytes(const std::filesystem::path& root);
