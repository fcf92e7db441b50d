#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Texts from a run, as they are written into a page: in the content of elements and in quoted
// attributes. Control characters, invalid UTF-8 and changes of direction are shown by their number.

std::string HtmlText(const std::string& text);

/// As ShownID.
std::string HtmlID(const std::string& id);

/// As JoinNames.
std::string HtmlNames(const std::vector<std::string>& ids, std::size_t most);
