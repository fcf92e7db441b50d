#pragma once

#include <string>

/// The system's number of the calling thread.
std::string ThreadNumber();
