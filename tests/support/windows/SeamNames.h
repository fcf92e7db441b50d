#pragma once

// The doubles of the operating-system calls under names of their own, forced upon every file of a
// unit test: a program that took the system's names would take them from the libraries it is linked
// with as well.

// First all that declares the system's calls by itself.
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
