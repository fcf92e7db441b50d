#pragma once

// Also read by C compilers.

/// Marks a function that a dynamic library offers by name.
#ifdef _WIN32
#define TEV_EXPORT __declspec(dllexport)
#else
#define TEV_EXPORT __attribute__((visibility("default")))
#endif
