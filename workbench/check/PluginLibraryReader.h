#pragma once

#include <filesystem>

#include "workbench/check/CheckedProduct.h"
#include "workbench/check/LibrarySystem.h"
#include "workbench/product/LocalNames.h"

/// Fills `product.libraries` for each plugin and sub platform that the frame starts, each driver
/// and each executable plugin with an ID. Nothing is loaded; each file is read once, in time and
/// memory in proportion to the files. Throws only std::bad_alloc.
void ReadPluginLibraries(CheckedProduct& product, const std::filesystem::path& productFolder,
                         const LocalNames& names, const LibrarySystem& system);
