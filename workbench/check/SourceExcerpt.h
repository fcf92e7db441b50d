#pragma once

#include <cstddef>
#include <string>

/// A part of a line of a file, as it is shown, and where the caret stands below it.
struct SourceExcerpt {
  std::string text;
  std::size_t caret = 0;       // columns before the caret
  std::size_t underlined = 0;  // columns from the caret on; 0: there is no caret
};

/// One line of a file, of which several columns are shown one after the other.
///
/// It remembers the last place, so that ascending columns of a long line take time in proportion to
/// the line. Not thread-safe.
class SourceText {
 public:
  SourceText() = default;
  explicit SourceText(std::string line);

  /// The part around the character `column`, from 1, cut to `columns`; from the line's beginning
  /// and without a caret when `column` is 0. The word that begins there is underlined: up to a
  /// blank, a quotation mark, "<", ">", "=" or "/>".
  ///
  /// Tabs become blanks, blanks at the end are removed, everything else is escaped.
  SourceExcerpt Around(int column, std::size_t columns);

 private:
  std::size_t OffsetOf(int column);

  std::string m_line;
  int m_column = 1;  // the last place
  std::size_t m_offset = 0;
};
