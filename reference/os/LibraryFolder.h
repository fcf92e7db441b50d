#pragma once

#include <string>

/// Makes the loader look in `folder`, a full path, for the libraries that a library needs, as it
/// does in the running program's own. Nothing happens where every library itself names the places
/// to look in. For the begin of a program, before other threads.
void LookForLibrariesIn(const std::string& folder);
