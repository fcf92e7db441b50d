#pragma once

#include <filesystem>
#include <string>

/// Whether both are regular files that can be read and their content differs. Reads each at most
/// once, in pieces.
bool HaveDifferentContent(const std::filesystem::path& a, const std::filesystem::path& b);

/// The content of `file`, a path from the command line. Throws UsageError when it cannot be read,
/// with a sentence that begins with `option`.
std::string ReadFileText(const char* option, const std::string& file);

/// Writes `text` to `file`, a path from the command line. Throws UsageError when that fails, with a
/// sentence that begins with `option`.
void WriteFileText(const char* option, const std::string& file, const std::string& text);
