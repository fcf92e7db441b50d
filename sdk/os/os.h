#pragma once

// The operating-system calls that the frame makes, under their Windows names.
//
// On Windows this is the system's own header. Elsewhere the same few names are declared here and
// implemented by the operating-system layer, so that no other code needs to ask where it runs.

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <cstdio>  // fopen_s

#else

#include <cerrno>
#include <cstdint>
#include <cstdio>

using HMODULE = void*;
using FARPROC = void (*)();
using BOOL = int;
using DWORD = std::uint32_t;
using ULONGLONG = std::uint64_t;

extern "C" {

/// Loads the dynamic library at `path` with all its symbols bound at once, private to its handle.
/// Returns its handle, or null. The handle is the same while the library stays loaded; each call
/// needs its own FreeLibrary. After null, GetLastError returns the reason as one of the codes
/// below, and the loader's message is logged. Any thread. Never throws.
HMODULE LoadLibraryW(const wchar_t* path);

/// The address of the exported symbol `name` of a loaded library, or null when it has none.
/// Any thread. Never throws.
FARPROC GetProcAddress(HMODULE library, const char* name);

/// Frees one handle of LoadLibraryW; the library is unmapped with its last handle.
/// Returns non-zero on success. Any thread. Never throws.
BOOL FreeLibrary(HMODULE library);

/// The reason of the calling thread's last failed call above: one of the codes below, 0 for none.
DWORD GetLastError();

/// Milliseconds since a fixed point in the past; never decreases. Any thread.
ULONGLONG GetTickCount64();

}  // extern "C"

/// Opens the file at `path` as std::fopen does. Returns 0, or errno with `*file` null. Any thread.
/// Never throws. Windows' own keeps other processes from writing to a file that is open for
/// reading, and does not open one that another process has open for writing.
inline int fopen_s(std::FILE** file, const char* path, const char* mode) {
  *file = std::fopen(path, mode);
  return *file == nullptr ? errno : 0;
}

constexpr DWORD ERROR_ACCESS_DENIED = 5;     // the file is there but may not be read
constexpr DWORD ERROR_INVALID_HANDLE = 6;    // a null handle was given
constexpr DWORD ERROR_MOD_NOT_FOUND = 126;   // the library, or one that it needs, is missing
constexpr DWORD ERROR_PROC_NOT_FOUND = 127;  // a symbol is missing
constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;  // not a library, or one for another machine

#endif
