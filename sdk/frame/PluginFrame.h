#pragma once

#include <cstdint>

// What TevPluginFrame exports for its host. A host loads the library by path and looks the entries
// up by these names. Order of the calls: Frame_Init, Frame_Start, Frame_Stop, Frame_UnInit, each
// once, on one thread; nothing guards against another order. Nothing is ever thrown out of an
// entry.

extern "C" {

/// Brings the platform up, reads the installed product and hands it over.
/// Returns 0 on success, -1 on failure; the platform is then down again and the log says why.
std::int32_t Frame_Init();

/// Starts the platform; the plugins start from its completion callback, after this returns or
/// before. Returns the platform's own result.
std::int32_t Frame_Start();

/// Takes the plugins down, then stops the platform.
void Frame_Stop();

/// Takes the platform down.
void Frame_UnInit();

/// Copies the text of the platform's last error into `text` of `size` bytes, zero-terminated and
/// cut to fit. Returns its code, 0 for none. Any thread, any time.
std::int32_t Frame_GetLastError(char* text, std::int32_t size);

/// Copies the platform's version text the same way. Returns its full length. Any thread, any time.
std::int32_t Frame_GetVersion(char* text, std::int32_t size);

/// Does nothing and returns 0.
std::int32_t Frame_Gtest(std::int32_t number, void* pointer);

}  // extern "C"
