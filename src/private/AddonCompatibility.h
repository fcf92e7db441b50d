#pragma once

#include <string>

namespace TevModelParse {

/// Whether an addon may run with the running product.
enum class Compatibility {
  kCompatible,
  kIncompatible,
  kProductTooOld  // incompatible, which is logged in a line of its own
};

/// Judges an addon by the product's code and short version and by the lowest product version that
/// the addon supports. Versions are compared as texts, byte by byte: 2.10.0 lies below 2.6.0.
Compatibility JudgeCompatibility(const std::string& productName, const std::string& productVersion,
                                 const std::string& minVersion);

/// The code of the product that an addon's description names by its logo text; empty for a text
/// that names none.
std::string ProductCodeOfLogo(const std::string& logo);

}  // namespace TevModelParse
