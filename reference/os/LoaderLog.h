#pragma once

/// Takes what the system's loader says of a library that it could not load: "path: message".
using LoaderLogFn = void (*)(const char* text) noexcept;

/// Sets where loader messages go; to standard error unless set. Any thread.
void SetLoaderLog(LoaderLogFn log);
