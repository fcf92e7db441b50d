#pragma once

#include "reference/os/CrashText.h"

/// Appends why std::terminate was called: the type and the text of the uncaught exception. Only for
/// a terminate handler; calls the exception's what().
void DescribeUncaughtException(CrashText& text);
