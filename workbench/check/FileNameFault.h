#pragma once

#include <string>

/// Why `id`, which the frame uses as it stands as the name of a folder, a file and a library,
/// cannot be such a name on every system: "contains "/", which separates folders". Empty when it
/// can, and for an empty ID.
std::string FileNameFault(const std::string& id);
