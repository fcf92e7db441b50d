#pragma once

#include <filesystem>

#include "workbench/check/LibrarySystem.h"

/// How libraries of the product whose executables are in `bin`, an absolute path, are loaded here
/// by `HUB --bin`. Call it while no other thread changes the environment.
LibrarySystem ThisLibrarySystem(const std::filesystem::path& bin);
