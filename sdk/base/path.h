#pragma once

#include <string>

/// The directory of the running executable, ending in a separator; empty when it is not known.
/// Any thread.
std::string GetCurExeDir();

/// Converts a text from the local code page to the wide form that the library loader takes. ASCII
/// characters stay as they are. Bytes that are not valid in the code page reach the loader
/// unchanged, except on Windows, where the system converts them. Any thread.
std::wstring LocalToWide(const std::string& text);
