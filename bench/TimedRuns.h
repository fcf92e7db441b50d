#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/ProductGenerator.h"

// The products that timed_run starts, and its call.

/// The library whose Init and UnInit take so long each: 50 or 1900.
std::filesystem::path LibraryThatTakes(int milliseconds);

/// `count` plugins of 50 ms, none of which waits for another.
std::vector<GeneratedPlugin> IndependentPlugins(std::size_t count);

/// `count` plugins of 50 ms, which all wait for one more, of 1900 ms.
std::vector<GeneratedPlugin> WaitingPlugins(std::size_t count);

/// Runs timed_run on `product` with further `arguments`, as a shell takes them. Returns the
/// numbers that it printed, by name; nothing when it failed, which it says on standard error.
std::map<std::string, double> RunTimed(const std::filesystem::path& product,
                                       const std::string& arguments = "");
