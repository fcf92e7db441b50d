#pragma once

#include <filesystem>

/// The folder for the state that programs keep between runs for this user: $XDG_STATE_HOME, or
/// .local/state in the user's home ($HOME, or the home in the user database); on Windows
/// %LOCALAPPDATA%, or what the system returns. An absolute path that need not exist; empty when
/// unknown. Thread-safe as long as no thread changes the environment.
std::filesystem::path UserStateFolder();
