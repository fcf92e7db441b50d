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
///
/// Not from within a call that the frame makes to the platform, the local-procedure-call framework
/// or the base library: many of them are made under the frame's lifecycle lock, for which this
/// would wait for ever. On the host's thread it ends a start that still runs on the platform's.
///
/// Pool threads may still run the frame's code when this returns: a task for a moment after its
/// plugin has been counted, and one whose Init the stop has passed by for as long as that takes.
/// The SDK has no call that says when the last task has left the frame. So a host does not unmap
/// this library: it ends the process with the library mapped.
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
