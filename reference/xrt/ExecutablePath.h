#pragma once

#include <string>

/// Makes XRT_GetCurExePath return `path` instead of the real path; empty: the real path again.
/// Thread-safe.
void SetExecutablePath(const std::string& path);
