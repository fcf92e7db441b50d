#pragma once

#include <string>

/// The full path of the running executable, of any length; empty when the system gives none.
/// Any thread.
std::string ProcessPath();
