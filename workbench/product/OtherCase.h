#pragma once

#include <filesystem>
#include <optional>

/// An existing file whose path differs from `wanted` only in the case of ASCII letters, in any part
/// below a folder that exists. None when `wanted` itself exists.
std::optional<std::filesystem::path> FileWithOtherCase(const std::filesystem::path& wanted);
