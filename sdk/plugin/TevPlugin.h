#pragma once

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "sdk/os/export.h"

// The contract of a plugin library: a file named by the plugin's ID + ".dll" that exports the two
// functions below. The frame calls Init once on a pool thread after every plugin that this one
// depends on has finished its own, and UnInit once after every plugin that depends on this one has
// finished its own. Both return true for success; something thrown counts as false.
//
// A plugin may be written in C.

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-redundant-void-arg): in C, empty parentheses would allow any arguments

/// Starts the plugin. False: the plugin counts as failed, but stays loaded until the stop, which
/// calls its UnInit.
TEV_EXPORT bool Init(void);

/// Stops the plugin. True: the library is freed. False: it stays mapped until the process ends.
TEV_EXPORT bool UnInit(void);

// NOLINTEND(modernize-redundant-void-arg)

#ifdef __cplusplus
}  // extern "C"
#endif
