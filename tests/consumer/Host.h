#pragma once

#include <sdk/os/export.h>

/// What the host offers to its plugins: says that one is up, on the plugin's thread.
TEV_EXPORT void PluginIsUp(const char* id);
