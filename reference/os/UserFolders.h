#pragma once

#include <filesystem>

/// The folder in which programs keep what they remember of the user's work: $XDG_STATE_HOME, or
/// .local/state in the user's home ($HOME, else what the user database says); on Windows
/// %LOCALAPPDATA%, else what the system says. An absolute path that need not exist; empty when
/// unknown. Any thread, while none changes the environment.
std::filesystem::path UserStateFolder();
