#pragma once

#include <filesystem>
#include <optional>

/// The file that is there when `wanted` is not, and only the case of ASCII letters differs, in any
/// part of it below a folder that exists. None when `wanted` exists.
std::optional<std::filesystem::path> FileWithOtherCase(const std::filesystem::path& wanted);
