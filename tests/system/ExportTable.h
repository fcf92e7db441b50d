#pragma once

#include <set>
#include <string>

// The names that a built library offers to others, and those that it takes from them.
std::set<std::string> ExportedNames(const std::string& library);
std::set<std::string> ImportedNames(const std::string& library);
