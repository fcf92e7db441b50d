#pragma once

#include <filesystem>
#include <string>

/// How names in the local code page become paths, and paths become such names.
///
/// The frame joins the narrow name of its folder and the bytes of an ID from a model file, and
/// opens the result in the local code page. Only the caller's operating-system layer knows that
/// code page; with other functions a non-ASCII name on Windows would lead to another file.
struct LocalNames {
  std::filesystem::path (*toPath)(const std::string& local);
  std::string (*fromPath)(const std::filesystem::path& path);
};
