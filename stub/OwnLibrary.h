#pragma once

#include <cstdio>
#include <string>

// The library that this code is part of. Thread-safe.

/// The name of the library's file, without its folder and extension.
std::string OwnName();

/// Opens a file in the library's folder for reading; null when that fails.
std::FILE* OpenBesideLibrary(const std::string& name);
