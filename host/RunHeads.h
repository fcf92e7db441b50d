#pragma once

#include <string>
#include <vector>

#include "host/RunClock.h"
#include "workbench/product/ProductName.h"
#include "workbench/record/RunEvent.h"

/// What is known of a run before it begins. `bin`: the folder used as the executable's folder, in
/// the local code page. `product`: name and version from Product.xml.
RunHead MakeRunHead(const RunClock& clock, const std::string& bin,
                    const std::vector<std::string>& commandLine, const ProductName& product,
                    bool fullSleep);
