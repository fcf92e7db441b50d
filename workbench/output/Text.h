#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Texts as a terminal shows them. UTF-8; a byte that is not valid counts as one column.

/// How many columns a terminal takes for `text`: two for wide characters, none for combining marks.
std::size_t Columns(const std::string& text);

/// `text` cut to `columns`, never inside a character; a cut text ends in "...", where there is room
/// for it.
std::string CutToColumns(const std::string& text, std::size_t columns);

/// `text` filled up with blanks to `columns`, behind it or before it.
std::string PadRight(const std::string& text, std::size_t columns);
std::string PadLeft(const std::string& text, std::size_t columns);

/// Control bytes as \xNN, so that a name from a file can neither move the cursor nor begin a line.
std::string Escaped(const std::string& text);

/// "a", "a and b", "a, b and c"; of more than `most`, the first ones and "and N more".
std::string JoinNames(const std::vector<std::string>& names, std::size_t most);

/// "1 plugin", "2 plugins".
std::string Count(std::size_t number, const std::string& what);
