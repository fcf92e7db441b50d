#include "workbench/check/SourceExcerpt.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "workbench/output/Text.h"

namespace {

constexpr char kTab[] = "    ";
constexpr char kDots[] = "...";
constexpr std::size_t kDotsColumns = 3;
constexpr std::size_t kLongestCharacter = 4;
constexpr std::size_t kMostBytes = 4096;  // of a part; marks of no width would make it endless

bool ContinuesCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// The offset behind the character at `at`, which is within the line.
std::size_t Next(const std::string& line, std::size_t at) {
  const std::size_t most = std::min(line.size(), at + kLongestCharacter);
  const bool several = static_cast<unsigned char>(line[at]) >= 0xC0U;
  ++at;
  while (several && at < most && ContinuesCharacter(line[at])) ++at;
  return at;
}

/// The offset of the character before `at`, which is behind the line's beginning.
std::size_t Previous(const std::string& line, std::size_t at) {
  const std::size_t least = at < kLongestCharacter ? 0 : at - kLongestCharacter;
  std::size_t before = at - 1;
  while (before > least && ContinuesCharacter(line[before])) --before;
  return Next(line, before) == at ? before : at - 1;
}

/// The characters from `begin` to `end` as they are shown.
std::string Shown(const std::string& line, std::size_t begin, std::size_t end) {
  std::string shown;
  for (std::size_t at = begin; at < end; at = Next(line, at)) {
    shown += line[at] == '\t' ? kTab : Escaped(line.substr(at, Next(line, at) - at));
  }
  return shown;
}

std::size_t ShownColumns(const std::string& line, std::size_t from, std::size_t to) {
  return Columns(Shown(line, from, to));
}

bool EndsWord(const std::string& line, std::size_t at) {
  return std::strchr(" \t\"'<>=", line[at]) != nullptr || line.compare(at, 2, "/>") == 0;
}

/// The offset behind the word that begins at `begin`; "<" or "</" belongs to it.
std::size_t EndOfWord(const std::string& line, std::size_t begin, std::size_t most) {
  std::size_t end = begin;
  if (end < most && line[end] == '<') ++end;
  if (end > begin && end < most && line[end] == '/') ++end;
  while (end < most && !EndsWord(line, end)) ++end;
  return end;
}

/// The first offset of a part that ends at `end` and takes at most `columns`.
std::size_t BeginWithin(const std::string& line, std::size_t end, std::size_t columns) {
  std::size_t begin = end;
  while (begin > 0 && end - begin < kMostBytes) {
    const std::size_t before = Previous(line, begin);
    const std::size_t taken = ShownColumns(line, before, begin);
    if (taken > columns) break;
    columns -= taken;
    begin = before;
  }
  return begin;
}

/// The offset behind a part that begins at `begin` and takes at most `columns`.
std::size_t EndWithin(const std::string& line, std::size_t begin, std::size_t columns) {
  std::size_t end = begin;
  while (end < line.size() && end - begin < kMostBytes) {
    const std::size_t next = Next(line, end);
    const std::size_t taken = ShownColumns(line, end, next);
    if (taken > columns) break;
    columns -= taken;
    end = next;
  }
  return end;
}

}  // namespace

SourceText::SourceText(std::string line) : m_line(std::move(line)) {
  m_line.erase(m_line.find_last_not_of(" \t\r") + 1);
}

SourceExcerpt SourceText::Around(int column, std::size_t columns) {
  const std::size_t place = column > 0 ? OffsetOf(column) : 0;
  std::size_t begin = BeginWithin(m_line, place, columns);
  std::size_t end = EndWithin(m_line, begin, columns);
  if (begin > 0 || end < m_line.size()) {
    const std::size_t most = columns > 2 * kDotsColumns ? columns - 2 * kDotsColumns : 1;
    end = EndWithin(m_line, place, most - most / 3);
    begin = BeginWithin(m_line, place, most - ShownColumns(m_line, place, end));
    end = EndWithin(m_line, begin, most);
  }
  const std::string before = (begin > 0 ? kDots : "") + Shown(m_line, begin, place);
  SourceExcerpt excerpt;
  excerpt.text = before + Shown(m_line, place, end) + (end < m_line.size() ? kDots : "");
  if (column > 0) {
    excerpt.caret = Columns(before);
    const std::size_t word = EndOfWord(m_line, place, end);
    excerpt.underlined = std::max<std::size_t>(1, ShownColumns(m_line, place, word));
  }
  return excerpt;
}

std::size_t SourceText::OffsetOf(int column) {
  if (column < m_column) {
    m_column = 1;
    m_offset = 0;
  }
  while (m_column < column && m_offset < m_line.size()) {
    m_offset = Next(m_line, m_offset);
    ++m_column;
  }
  return m_offset;
}
