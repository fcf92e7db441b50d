#pragma once

#include <string>

/// The full path of the running executable, of any length; empty when unknown.
/// Thread-safe.
std::string ProcessPath();
