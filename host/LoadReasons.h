#pragma once

#include <string>

#include "workbench/record/FrameEvent.h"

/// A better reason why a plugin was not loaded than the loader's own words: what is missing, what
/// lies there in its place; of a missing Init, what the event says of it. `reason` where there is
/// none. Reads files; any thread.
std::string BetterReason(const std::string& plugin, const FrameEvent& event,
                         const std::string& reason);

/// Under which mangled name `library`, which is loaded, exports `function`, as a clause that says
/// what was probably forgotten; empty when it does not. Takes the loader's lock: never to be called
/// under a lock that a plugin's code may wait for.
std::string MangledExport(const std::string& library, const char* function);
