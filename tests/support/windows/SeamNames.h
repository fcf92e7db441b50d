#pragma once

// Gives the doubles of the operating-system calls other names; included into every file of a unit
// test. If the test program itself defined the system's names, the libraries that are linked into
// it would call the doubles too.

// First the headers that declare the system's calls.
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <boost/thread/shared_mutex.hpp>

#include "sdk/os/os.h"

extern "C" {
HMODULE SeamLoadLibraryW(const wchar_t* path);
FARPROC SeamGetProcAddress(HMODULE library, const char* name);
BOOL SeamFreeLibrary(HMODULE library);
DWORD SeamGetLastError();
ULONGLONG SeamGetTickCount64();
}

#define LoadLibraryW SeamLoadLibraryW
#define GetProcAddress SeamGetProcAddress
#define FreeLibrary SeamFreeLibrary
#define GetLastError SeamGetLastError
#define GetTickCount64 SeamGetTickCount64
