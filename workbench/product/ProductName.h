#pragma once

#include <filesystem>
#include <string>

#include "workbench/product/LocalNames.h"

/// What Product.xml calls the product; both empty when it cannot be read.
struct ProductName {
  std::string name;
  std::string version;
};

/// Reads it for the product whose executables lie in `bin`, from a regular file alone: reading a
/// pipe might never end. Throws std::bad_alloc alone.
ProductName ReadProductName(const std::filesystem::path& bin, const LocalNames& names);
