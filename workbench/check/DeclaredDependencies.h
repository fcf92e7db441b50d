#pragma once

#include <map>
#include <string>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/RuleFinding.h"

/// Where the plugin declares its dependencies that order the start, by the IDs that it depends on.
/// Empty when no description of it is kept. A platform's dependencies have no place.
std::map<std::string, Place> DeclaredDependencies(const CheckedProduct& product,
                                                  const std::string& id);
