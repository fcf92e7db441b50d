#pragma once

#include <filesystem>
#include <string>

struct HostContext;

/// Whether both are regular files that can be read and their content differs. Reads each at most
/// once, in pieces.
bool HaveDifferentContent(const std::filesystem::path& a, const std::filesystem::path& b);

/// The content of `file`, a path from the command line. Throws UsageError when it cannot be read,
/// with a sentence that begins with `option`.
std::string ReadFileText(const char* option, const std::string& file);

/// Writes `text` to `file`, a path from the command line. Throws UsageError when that fails, with a
/// sentence that begins with `option`.
void WriteFileText(const char* option, const std::string& file, const std::string& text);

/// Writes what a command prints to standard output and waits until it is written. Throws UsageError
/// when that fails.
void WriteOutput(HostContext& context, const std::string& text);
