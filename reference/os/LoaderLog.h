#pragma once

/// Takes what the system's loader says of a library that it could not load: "path: message". Called
/// on the thread that asked for the library.
using LoaderLogFn = void (*)(const char* text) noexcept;

/// Sets where loader messages go, which must not be null; to standard error unless set. Any thread.
/// Windows' loader says nothing but its error code, so that nothing comes there.
void SetLoaderLog(LoaderLogFn log);
