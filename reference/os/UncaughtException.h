#pragma once

#include "reference/os/CrashText.h"

/// Appends why std::terminate was called: the type and the text of the exception that nobody
/// caught. For a terminate handler only; runs the exception's own code.
void DescribeUncaughtException(CrashText& text);
