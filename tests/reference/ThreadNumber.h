#pragma once

#include <string>

/// The system's ID of the calling thread.
std::string ThreadNumber();
