#pragma once

#include "tests/system/HubProcess.h"

/// Asks a running process to stop.
void StopProcess(boost::process::child& process, StopKind how);

/// The signal that ended a process that has been waited for; 0 for none.
int EndingSignal(const boost::process::child& process);
