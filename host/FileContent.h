#pragma once

#include <filesystem>

/// Whether both are regular files that can be read and their content differs. Reads each at most
/// once, in pieces.
bool HaveDifferentContent(const std::filesystem::path& a, const std::filesystem::path& b);
