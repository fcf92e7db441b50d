#pragma once

#include <string>

/// Reads `input` as a library's file and checks what the header has: it is bounded by the file.
void FuzzLibrary(const std::string& input);
