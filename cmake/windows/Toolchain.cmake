# Cross build for Windows x86-64: MinGW-w64 with POSIX threads, tests run by Wine.
# TEV_WINDOWS_PREFIX: the folder in which tools/windows-dependencies has installed the libraries.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES TEV_WINDOWS_PREFIX)
set(CMAKE_FIND_ROOT_PATH ${TEV_WINDOWS_PREFIX} /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Windows 7 and later; set here so that every target sees the same declarations in system headers.
set(CMAKE_CXX_FLAGS_INIT -D_WIN32_WINNT=0x0601)
set(CMAKE_C_FLAGS_INIT -D_WIN32_WINNT=0x0601)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine)
