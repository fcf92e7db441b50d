#pragma once

#include <string>

/// Makes the loader search `folder`, a full path, for the libraries that a library needs, in
/// addition to the program's own folder. Does nothing on systems where each library itself names
/// the folders to search. Call it at the start of the program, before there are other threads.
void LookForLibrariesIn(const std::string& folder);
