#pragma once

/// Marks a function that a dynamic library offers by name.
#ifdef _WIN32
#define TEV_EXPORT __declspec(dllexport)
#else
#define TEV_EXPORT [[gnu::visibility("default")]]
#endif
