#pragma once

#include <filesystem>
#include <string>

#include "workbench/product/LocalNames.h"

/// The product's name and version from Product.xml; both empty when it cannot be read.
struct ProductName {
  std::string name;
  std::string version;
};

/// Reads them for the product whose executables lie in `bin`. Only a regular file is read, since
/// reading a pipe might never end. Throws only std::bad_alloc.
ProductName ReadProductName(const std::filesystem::path& bin, const LocalNames& names);
