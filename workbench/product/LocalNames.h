#pragma once

#include <filesystem>
#include <string>

/// Functions that convert names in the local code page to paths and back.
///
/// The frame appends the bytes of an ID from a model file to the narrow name of its folder, and
/// opens the result in the local code page. Only the caller's operating-system layer knows that
/// code page; other conversions would lead to another file for a non-ASCII name on Windows.
struct LocalNames {
  std::filesystem::path (*toPath)(const std::string& local);
  std::string (*fromPath)(const std::filesystem::path& path);
};
