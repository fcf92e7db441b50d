#pragma once

#ifdef __cplusplus
#include <cstdint>
#else
#include <stdint.h>
#endif

// What TevPluginFrame exports for its host. A host loads the library by path and looks the entries
// up by these names. Order of the calls: Frame_Init, Frame_Start, Frame_Stop, Frame_UnInit, each
// once, on one thread; another order is not detected. No entry throws. A host may be written in C.

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-redundant-void-arg): in C, empty parentheses would allow any arguments

/// Initialises the platform, reads the installed product and hands it over.
/// Returns 0 on success. Returns -1 on failure, with the reason in the log; the platform is then
/// uninitialised again, unless it was the one that failed.
int32_t Frame_Init(void);

/// Starts the platform. The platform's completion callback starts the plugins, before or after this
/// returns. Returns the platform's result.
int32_t Frame_Start(void);

/// Stops and frees the plugins, then stops the platform. A start that still runs on the platform's
/// thread is ended first.
///
/// Must not be called from within a call that the frame makes to the platform, the
/// local-procedure-call framework or the base library: the frame may hold its lifecycle lock, which
/// this takes.
///
/// Pool threads may still run the frame's code when this returns: each task ends shortly after its
/// plugin has been counted, and an Init that the stop did not wait for may run on for any time.
/// The SDK has no call that says when the last task has left the frame. So a host does not unmap
/// this library: it ends the process with the library mapped.
void Frame_Stop(void);

/// Uninitialises the platform.
void Frame_UnInit(void);

/// Copies the text of the platform's last error into `text` of `size` bytes, zero-terminated and
/// cut to fit. Returns its code, 0 for none. Any thread, any time.
int32_t Frame_GetLastError(char* text, int32_t size);

/// Copies the platform's version text the same way. Returns its full length. Any thread, any time.
int32_t Frame_GetVersion(char* text, int32_t size);

/// Does nothing and returns 0.
int32_t Frame_Gtest(int32_t number, void* pointer);

// NOLINTEND(modernize-redundant-void-arg)

#ifdef __cplusplus
}  // extern "C"
#endif
