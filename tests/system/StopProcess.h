#pragma once

#include "tests/system/HubProcess.h"

/// Tells a running process of the wish that it stop.
void StopProcess(boost::process::child& process, StopWish wish);
