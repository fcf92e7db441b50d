#pragma once

#include <string>
#include <vector>

#include "host/RunClock.h"
#include "workbench/product/ProductName.h"
#include "workbench/record/RunEvent.h"

/// What is known of a run before it begins. `bin`: the folder that stands for the running
/// executable's own, in the local code page. `product`: what its Product.xml calls it.
RunHead MakeRunHead(const RunClock& clock, const std::string& bin,
                    const std::vector<std::string>& commandLine, const ProductName& product);

/// The head as the log's first line of a run.
std::string HeadLine(const RunHead& head);
