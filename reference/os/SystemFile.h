#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

/// An open file as the system knows it: a descriptor, on Windows a HANDLE.
using SystemFile = std::intptr_t;

constexpr SystemFile kNoFile = -1;

/// Opens `file`, which is there, for writes that all go to its end, whoever else writes to it.
/// Programs that the process starts do not inherit it. kNoFile when it cannot be opened.
SystemFile OpenForAppending(const std::filesystem::path& file);

void CloseFile(SystemFile file);

/// The process's standard error. Async-signal-safe.
SystemFile StandardError() noexcept;

/// For ever, as the longest wait for a reader.
constexpr int kForEver = -1;

/// Writes all of `text` to an open file. False when that fails, with the reason in errno (Windows:
/// GetLastError), or when nobody has read for `longestWait` milliseconds; on Windows it waits for
/// ever. Async-signal-safe.
bool WriteWhole(SystemFile file, std::string_view text, int longestWait) noexcept;
