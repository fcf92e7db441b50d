#pragma once

#include <cstdint>
#include <filesystem>

/// An open file as the system knows it: a descriptor, on Windows a HANDLE.
using SystemFile = std::intptr_t;

constexpr SystemFile kNoFile = -1;

/// Opens `file`, which is there, for writes that all go to its end, whoever else writes to it.
/// Programs that the process starts do not inherit it. kNoFile when it cannot be opened.
SystemFile OpenForAppending(const std::filesystem::path& file);

void CloseFile(SystemFile file);
