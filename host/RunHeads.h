#pragma once

#include <string>
#include <vector>

#include "host/RunClock.h"
#include "workbench/record/RunEvent.h"

/// What is known of a run before it begins. `bin`: the folder that stands for the running
/// executable's own, in the local code page.
RunHead MakeRunHead(const RunClock& clock, const std::string& bin,
                    const std::vector<std::string>& commandLine);

/// The head as the log's first line of a run.
std::string HeadLine(const RunHead& head);
