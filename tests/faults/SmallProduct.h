#pragma once

#include <map>
#include <string>

#include "tests/support/ProductTree.h"

/// The texts of one model file of each kind, by path in the product.
const std::map<std::string, std::string>& SmallProduct();

void WriteSmallProduct(const ProductTree& tree);
