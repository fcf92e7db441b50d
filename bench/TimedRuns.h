#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "bench/ProductGenerator.h"

// The products that timed_run starts, and the function that runs it.

/// The library whose Init and UnInit take `milliseconds` each: 0, 5, 50, 1900 or 2000.
std::filesystem::path LibraryThatTakes(int milliseconds);

/// The library whose Init and UnInit use 20 ms of processor time each.
std::filesystem::path LibraryThatWorks();

/// Four levels of ten plugins, each of which waits for all of the level before. All have `library`,
/// but the first of the second level `slow`.
std::vector<GeneratedPlugin> FourLevels(const std::filesystem::path& library,
                                        const std::filesystem::path& slow);

/// `count` plugins of 50 ms without dependencies.
std::vector<GeneratedPlugin> IndependentPlugins(std::size_t count);

/// `count` plugins of 50 ms, which all wait for one more plugin of 1900 ms.
std::vector<GeneratedPlugin> WaitingPlugins(std::size_t count);

/// Runs timed_run on `product` with further `arguments`, quoted for a shell. Returns the numbers
/// that it printed, by name; empty when it failed, with the reason on standard error.
std::map<std::string, double> RunTimed(const std::filesystem::path& product,
                                       const std::string& arguments = "");

/// Starts the plugins of `product` by the loader, on `threads` threads, or, 0, one after the other.
/// Returns the milliseconds that this took; negative when it failed.
double LoadTimed(const std::filesystem::path& product, const std::vector<GeneratedPlugin>& plugins,
                 int threads);
