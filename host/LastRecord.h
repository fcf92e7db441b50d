#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The record of the last run: of the product in `bin`, or of any when `bin` is empty; none when
/// the user's state folder has no such record.
std::optional<std::filesystem::path> FindLastRecord(const std::string& bin);

/// The same; throws UsageError when there is none.
std::filesystem::path LastRecord(const std::string& bin);
