#pragma once

#include <string>

/// Puts an input in the fuzz folder as a product. The input is split at each line "==" into the
/// model files of a product with the plugins a, b and c, the addon A and the tool T, and then into
/// the libraries of a and b; a file without a piece, or with an empty one, is missing.
void LayOutProduct(const std::string& input);
