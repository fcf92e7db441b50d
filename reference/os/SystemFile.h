#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

/// An open file of the system: a descriptor, on Windows a HANDLE.
using SystemFile = std::intptr_t;

constexpr SystemFile kNoFile = -1;

/// Opens the existing `file` so that every write appends to it, even if others write to it as well.
/// Programs that the process starts do not inherit it. kNoFile when it cannot be opened.
SystemFile OpenForAppending(const std::filesystem::path& file);

void CloseFile(SystemFile file);

/// The process's standard error. Async-signal-safe.
SystemFile StandardError() noexcept;

/// A `longestWait` without limit.
constexpr int kForEver = -1;

/// Writes all of `text` to an open file. False when that fails, with the reason in errno (Windows:
/// GetLastError), or when the reader has not read for `longestWait` milliseconds; on Windows the
/// wait has no limit. Async-signal-safe.
bool WriteWhole(SystemFile file, std::string_view text, int longestWait) noexcept;
