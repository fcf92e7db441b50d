// The headers of a PE library. The input is what follows its first bytes.

#include "fuzz/LibraryTarget.h"

void Fuzz(const std::string& input) {
  FuzzLibrary("MZ" + input);
}
