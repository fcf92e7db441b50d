#pragma once

#include <map>
#include <optional>
#include <string>

#include "sdk/os/export.h"

/// The data files of the site, in the folder `data` beside the plugins. Any thread.
namespace board {

/// The content of the data file `name`. Nothing, with a failure of `plugin` in the log, when it
/// cannot be read.
TEV_EXPORT std::optional<std::string> ReadData(const std::string& name, const char* plugin);

/// The values of a text of "key = value" lines, where # begins a comment.
TEV_EXPORT std::map<std::string, std::string> ParseSettings(const std::string& text);

}  // namespace board
