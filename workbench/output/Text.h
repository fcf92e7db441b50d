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

/// `text` in lines of at most `columns`, without line feeds; of 0 columns, `text` as it is.
///
/// Broken at blanks, which are left out there; a word that no line can hold is broken where the
/// line is full, never inside a character. Lines behind the first begin with `indent` blanks, with
/// no more than half of the columns. Only a character that is wider than `columns` goes beyond
/// them.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns, std::size_t indent);

/// The usual indent of a sentence's lines behind the first.
constexpr std::size_t kSentenceIndent = 4;

/// `text` filled up with blanks to `columns`, behind it or before it.
std::string PadRight(const std::string& text, std::size_t columns);
std::string PadLeft(const std::string& text, std::size_t columns);

/// What a terminal may execute, so that a name from a file can neither move the cursor, nor begin a
/// line, nor turn the direction of a text: control bytes and bytes that are no UTF-8 as \xNN; the
/// control characters U+0080 to U+009F, line separators and bidirectional embeddings, overrides and
/// isolates as \uNNNN. To escape an escaped text changes nothing.
std::string Escaped(const std::string& text);

/// An ID as people are shown it: escaped; "(no ID)" for an empty one.
std::string ShownID(const std::string& id);

/// "a", "a and b", "a, b and c"; of more than `most`, the first ones and "and N more". Each as
/// ShownID has it.
std::string JoinNames(const std::vector<std::string>& names, std::size_t most);

/// "1 plugin", "2 plugins".
std::string Count(std::size_t number, const std::string& what);
