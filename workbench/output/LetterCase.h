#pragma once

#include <string>

// Names that differ in the case of ASCII letters only: one file on Windows, two elsewhere.

/// `text` with small letters.
std::string Lowered(std::string text);

/// Whether the two are the same but for letter case; also when they are the same.
bool SameButCase(const std::string& a, const std::string& b);
