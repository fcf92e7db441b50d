#pragma once

#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

/// The files that the loader's cache (/etc/ld.so.cache) has for each library's name, in its order.
/// Empty when `file` cannot be read or is no such cache.
std::unordered_map<std::string, std::vector<std::string>> ReadLoaderCache(
    const std::filesystem::path& file);
