#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "host/StagedProduct.h"
#include "tests/support/TemporaryFolder.h"

/// The folder "site" with an empty product, and "parking" with the addon Parking 1.5.0.
struct StagedFolders {
  static constexpr char kEmptyList[] =
      "<InstalledProductsDescription><Addons/></InstalledProductsDescription>";
  static constexpr char kListOfParking[] =
      "<InstalledProductsDescription><Addons><Addon ID=\"Parking\" Version=\"1.5.0\"/></Addons>"
      "</InstalledProductsDescription>";

  StagedFolders() {
    std::filesystem::create_directories(folder.Path() / "site" / "bin");
    Write("parking/TevAddons/Parking/Parking.xml",
          "<AddonDescription><ID>Parking</ID><Version>1.5.0</Version></AddonDescription>");
  }

  ProductPlace Site() const { return {folder.Path() / "site", "bin"}; }

  /// Writes the file and its folders.
  void Write(const std::string& name, const std::string& content) const {
    std::filesystem::create_directories((folder.Path() / name).parent_path());
    folder.Write(name, content);
  }

  static std::string ReadFrom(const StagedProduct& staged, const std::string& name) {
    std::ifstream file(staged.Place().folder / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  static std::string Text(const Place& place) {
    return place.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
  }

  const TemporaryFolder folder;
};
