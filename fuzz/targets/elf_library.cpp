// The headers of an ELF library. The input is what follows its first bytes.

#include "fuzz/LibraryTarget.h"

void Fuzz(const std::string& input) {
  FuzzLibrary("\177ELF" + input);
}
