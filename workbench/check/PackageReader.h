#pragma once

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/ProductReader.h"
#include "workbench/product/LocalNames.h"

/// Looks for the packages that InstalledProducts.xml of the product names, and computes the MD5 of
/// those that have a checksum: takes time in proportion to their files, and little memory. Throws
/// only std::bad_alloc.
void ReadPackages(CheckedProduct& product, const ProductPlace& place, const LocalNames& names);
