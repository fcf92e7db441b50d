#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/ProductGenerator.h"

// The products that timed_run starts, and the function that runs it.

/// The library whose Init and UnInit take `milliseconds` each: 50 or 1900.
std::filesystem::path LibraryThatTakes(int milliseconds);

/// `count` plugins of 50 ms without dependencies.
std::vector<GeneratedPlugin> IndependentPlugins(std::size_t count);

/// `count` plugins of 50 ms, which all wait for one more plugin of 1900 ms.
std::vector<GeneratedPlugin> WaitingPlugins(std::size_t count);

/// Runs timed_run on `product` with further `arguments`, quoted for a shell. Returns the numbers
/// that it printed, by name; empty when it failed, with the reason on standard error.
std::map<std::string, double> RunTimed(const std::filesystem::path& product,
                                       const std::string& arguments = "");
