#pragma once

#include <cstdint>
#include <string>

/// When a plugin's start begins in a shuffled run, in milliseconds after the first one: at least 0,
/// less than `longest`, which is at least 1. Depends on nothing else, so that a seed gives the same
/// times on every system. Times are spread evenly; those of an odd seed are the times of the even
/// number before it in the reverse order. Thread-safe.
std::int64_t ShuffledDelay(std::uint64_t seed, const std::string& plugin, std::int64_t longest);

/// A number from all 64-bit numbers that depends on the seed and the text only, spread evenly.
std::uint64_t SeededHash(std::uint64_t seed, const std::string& text);
