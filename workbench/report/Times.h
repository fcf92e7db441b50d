#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Times in a report: milliseconds with one decimal, or without any when the run does not resolve
// them.

/// "12.3", of a run whose clock resolves less than a millisecond; otherwise "12". `kUnknown`: "-".
std::string MsText(std::int64_t nanoseconds, std::int64_t resolution);

/// The parts as MsText has them, rounded so that they add up to MsText of their sum.
std::vector<std::string> MsTexts(const std::vector<std::int64_t>& parts, std::int64_t resolution);

/// "12.3%"; "-" of a whole that took no time.
std::string ShareText(std::int64_t part, std::int64_t whole);
