#pragma once

/// Receives the message of the system's loader when it could not load a library: "path: message".
/// Called on the thread that tried to load it.
using LoaderLogFn = void (*)(const char* text) noexcept;

/// Sets the receiver of loader messages, not null; by default they go to standard error.
/// Thread-safe. Does nothing on Windows, whose loader gives only an error code.
void SetLoaderLog(LoaderLogFn log);
