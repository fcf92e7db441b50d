#pragma once

#include <map>
#include <string>

#include "tests/support/ProductTree.h"

/// One of each kind of model file, by its path in the product: every reader has something to read.
const std::map<std::string, std::string>& SmallProduct();

void WriteSmallProduct(const ProductTree& tree);
