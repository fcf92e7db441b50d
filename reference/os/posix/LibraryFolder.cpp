#include "reference/os/LibraryFolder.h"

void LookForLibrariesIn(const std::string&) {}
