#pragma once

#include "tests/system/HubProcess.h"

/// Sends a stop request to a running process.
void StopProcess(boost::process::child& process, StopKind how);

/// The signal that ended a process, after the process was waited for; 0 for none.
int EndingSignal(const boost::process::child& process);
