#pragma once

#include <string>

/// Makes the runtime report `path` as the running executable's; empty: its real one again.
/// Any thread.
void SetExecutablePath(const std::string& path);
