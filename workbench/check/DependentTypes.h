#pragma once

#include <vector>

#include "workbench/check/JudgedDependency.h"

// What the rules on DependentType have in common.

/// The <Plugin> dependencies of libraries by whose DependentType the frame does not wait, unless
/// another dependency makes it wait for the same plugin.
std::vector<JudgedDependency> TypesThatOrderNothing(const CheckedProduct& product);
