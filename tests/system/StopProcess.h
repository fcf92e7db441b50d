#pragma once

#include "tests/system/HubProcess.h"

/// Tells a running process of the wish that it stop.
void StopProcess(boost::process::child& process, StopWish wish);

/// The signal that ended a process that has been waited for; 0 for none.
int EndingSignal(const boost::process::child& process);
