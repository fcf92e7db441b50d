#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Texts for a terminal, in UTF-8. A byte that is not valid UTF-8 counts as one column.

/// How many columns a terminal takes for `text`: two for wide characters, none for combining marks.
std::size_t Columns(const std::string& text);

/// `text` cut to `columns`, never inside a character. A cut text ends in "..." if `columns` is
/// large enough.
std::string CutToColumns(const std::string& text, std::size_t columns);

/// `text` split into lines of at most `columns`, without line feeds; when `columns` is 0, `text` as
/// one line.
///
/// Lines are broken at blanks, which are removed there; a word longer than a line is broken where
/// the line is full, never inside a character. All lines but the first begin with `indent` blanks,
/// at most `columns` - 1. Only a character wider than `columns` makes a line wider.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns, std::size_t indent);

/// The usual indent of all lines of a sentence but the first.
constexpr std::size_t kSentenceIndent = 4;

/// `text` padded with blanks to `columns`, on the right or on the left.
std::string PadRight(const std::string& text, std::size_t columns);
std::string PadLeft(const std::string& text, std::size_t columns);

/// `text` with everything escaped on which a terminal may act, so that a name from a file can
/// neither move the cursor, nor begin a line, nor change the text's direction. Control bytes and
/// invalid UTF-8 become \xNN; U+0080 to U+009F, line separators and bidirectional embeddings,
/// overrides and isolates become \uNNNN. Escaping an escaped text changes nothing.
std::string Escaped(const std::string& text);

/// An ID as it is displayed: escaped; "(no ID)" for an empty one.
std::string ShownID(const std::string& id);

/// "a", "a and b", "a, b and c"; for more than `most` names, the first ones and "and N more". Each
/// name is formatted by ShownID.
std::string JoinNames(const std::vector<std::string>& names, std::size_t most);

/// "1 plugin", "2 plugins".
std::string Count(std::size_t number, const std::string& what);
