#pragma once

#include <cstdint>

/// An open file as the system knows it: a descriptor, on Windows a HANDLE.
using SystemFile = std::intptr_t;

constexpr SystemFile kNoFile = -1;
