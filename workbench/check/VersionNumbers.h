#pragma once

#include <optional>
#include <string>

/// Compares two versions as numbers, part by part; missing parts count as 0: "2.10" is above "2.9",
/// "2.0" equals "2". Negative when `a` is below `b`, 0 when they are equal, positive when it is
/// above; none unless all parts of both are numbers.
std::optional<int> CompareVersions(const std::string& a, const std::string& b);

/// Whether `a` is above `b` when their parts are compared as numbers, as far as both have parts:
/// "2.10" is above "2.9", "2.7.1" is not above "2.7". False when a part is no number.
bool IsAboveAsNumbers(const std::string& a, const std::string& b);

/// The first three non-empty parts of a dotted version, joined by ".": what the frame compares with
/// the versions of addons. Empty when there are fewer parts.
std::string ThreeParts(const std::string& version);
