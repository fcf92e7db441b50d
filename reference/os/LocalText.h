#pragma once

#include <string>

// Texts in the local code page, which is UTF-8 on systems other than Windows, and their wide form.
// A byte that is not valid stands as a lone code point from U+DC80 on, so that every file name
// survives the way there and back.

std::wstring WideFromLocal(const std::string& text);
std::string LocalFromWide(const std::wstring& text);
