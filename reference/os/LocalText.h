#pragma once

#include <filesystem>
#include <string>

// Converts texts between the local code page and wide characters. Thread-safe.
//
// On systems other than Windows the code page is UTF-8. A byte that is not valid UTF-8 becomes the
// code point U+DC00 plus the byte, and is converted back to that byte, so that no file name changes
// when it is converted to wide characters and back.

std::wstring WideFromLocal(const std::string& text);
std::string LocalFromWide(const std::wstring& text);

// The same for paths.
std::filesystem::path PathFromLocal(const std::string& text);
std::string LocalFromPath(const std::filesystem::path& path);
