#pragma once

#include <string>

/// `text` in one line, with control bytes as \xNN: as reasons stand in a record, and all texts in
/// HUB's log.
std::string OneLine(const std::string& text);
