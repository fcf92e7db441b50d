#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "workbench/check/CheckedProduct.h"

/// For how many missing files of one kind it is worth while to look for similar names: this takes
/// time in proportion to the names in the folder.
constexpr std::size_t kMostHints = 100;

/// What lies on disk instead of the missing file or folder `name`: "; there is "portal.xml", with
/// other letter case", or a name that is nearly the same, but none of `used`, which are in use by
/// their own names. Empty when there is nothing like it.
std::string NameHint(const CheckedProduct& product, const std::string& name,
                     const std::set<std::string>& used = {});

/// Why a file that cannot be read cannot be read, and its .data file neither: "does not exist, and
/// there is no Portal.data beside it that could stand in".
std::string WhyUnreadable(const CheckedFile& file);
