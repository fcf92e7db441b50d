#pragma once

#include <filesystem>
#include <string>

// Texts in the local code page and their wide form. Any thread.
//
// On systems other than Windows the code page is UTF-8. A byte that is not valid there stands as
// the lone code point U+DC00 plus the byte, which becomes that byte again, so that every file name
// survives the way there and back.

std::wstring WideFromLocal(const std::string& text);
std::string LocalFromWide(const std::wstring& text);

// The same of paths: the standard library takes a narrow one for UTF-8 on every system.
std::filesystem::path PathFromLocal(const std::string& text);
std::string LocalFromPath(const std::filesystem::path& path);
