#pragma once

#include <string>

/// Makes the frame take `bin` for the executable's folder, and HUB for the executable's name, and
/// the system look there for libraries. `bin`: as the command line has it; empty: nothing is done.
void UseProductFolder(const std::string& bin);
