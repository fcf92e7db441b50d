#include "workbench/output/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace {

/// One character of a text: its length in bytes and its code point. A byte that is not valid UTF-8
/// is a character by itself.
struct Character {
  std::size_t bytes = 1;
  char32_t code = 0xFFFD;
  bool valid = false;
};

Character CharacterAt(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(at);
  if (first < 0x80) return {1, first, true};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || at + length > text.size()) return {};
  char32_t code = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0U) != 0x80U) return {};
    code = code << 6U | (byte(at + i) & 0x3FU);
  }
  const bool tooLong = code < (length == 4 ? 0x10000U : length == 3 ? 0x800U : 0x80U);
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (tooLong || surrogate || code > 0x10FFFF) return {};
  return {length, code, true};
}

struct Range {
  char32_t first;
  char32_t last;
};

/// The blocks of combining marks and zero-width characters that occur in names.
constexpr Range kNoColumn[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489},  {0x0591, 0x05BD}, {0x064B, 0x065F}, {0x0E31, 0x0E31},
    {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},  {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F},
    {0x202A, 0x202E}, {0x2060, 0x2064},  {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F},
    {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF}};

/// The East Asian wide blocks and the emoji.
constexpr Range kTwoColumns[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},
    {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

template <std::size_t N>
bool Within(const Range (&ranges)[N], char32_t code) {
  return std::any_of(std::begin(ranges), std::end(ranges), [code](const Range& range) {
    return code >= range.first && code <= range.last;
  });
}

std::size_t ColumnsOf(char32_t code) {
  if (Within(kNoColumn, code)) return 0;
  return Within(kTwoColumns, code) ? 2 : 1;
}

/// Characters, besides the ASCII control bytes, on which a terminal may act: the C1 control
/// characters, line and paragraph separators, and those that change the direction of the text.
constexpr Range kExecuted[] = {
    {0x0080, 0x009F}, {0x2028, 0x2029}, {0x202A, 0x202E}, {0x2066, 0x2069}};

/// How many bytes of `text` fit into `columns`; whole characters with their combining marks.
std::size_t BytesWithin(std::string_view text, std::size_t columns) {
  std::size_t taken = 0;
  std::size_t at = 0;
  while (at < text.size()) {
    const Character character = CharacterAt(text, at);
    taken += ColumnsOf(character.code);
    if (taken > columns) break;
    at += character.bytes;
  }
  return at;
}

/// The number of bytes of the first line of `text`, which is wider than `columns`. `next`: how many
/// columns the following lines have.
std::size_t BreakOf(std::string_view text, std::size_t columns, std::size_t next) {
  const std::size_t most = BytesWithin(text, columns);
  if (text[most] == ' ') return most;
  const std::size_t word = text.substr(0, most).rfind(' ') + 1;
  const bool behindAnother = text.find_first_not_of(' ') < word;
  const std::size_t held = word + BytesWithin(text.substr(word), next);
  const bool nextHoldsIt =
      held == text.size() || text.substr(word, held + 1 - word).find(' ') != std::string_view::npos;
  if (behindAnother && nextHoldsIt) return word;
  if (most > 0) return most;
  return BytesWithin(text, ColumnsOf(CharacterAt(text, 0).code));
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

std::size_t Columns(const std::string& text) {
  std::size_t columns = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = CharacterAt(text, at);
    columns += ColumnsOf(character.code);
    at += character.bytes;
  }
  return columns;
}

std::string CutToColumns(const std::string& text, std::size_t columns) {
  constexpr std::size_t dots = 3;
  if (Columns(text) <= columns) return text;
  if (columns <= dots) return text.substr(0, BytesWithin(text, columns));
  return text.substr(0, BytesWithin(text, columns - dots)) + "...";
}

std::vector<std::string> Wrapped(const std::string& text, std::size_t columns, std::size_t indent) {
  if (columns == 0) return {text};
  const std::string blanks(std::min(indent, columns - 1), ' ');
  std::vector<std::string> lines;
  std::string_view rest = WithoutTrailingBlanks(text);
  std::size_t room = columns;
  while (BytesWithin(rest, room) < rest.size()) {
    const std::size_t end = BreakOf(rest, room, columns - blanks.size());
    lines.push_back((lines.empty() ? "" : blanks) +
                    std::string(WithoutTrailingBlanks(rest.substr(0, end))));
    rest.remove_prefix(end);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    room = columns - blanks.size();
  }
  if (lines.empty() || !rest.empty()) {
    lines.push_back((lines.empty() ? "" : blanks) + std::string(rest));
  }
  return lines;
}

std::string PadRight(const std::string& text, std::size_t columns) {
  const std::size_t taken = Columns(text);
  return taken < columns ? text + std::string(columns - taken, ' ') : text;
}

std::string PadLeft(const std::string& text, std::size_t columns) {
  const std::size_t taken = Columns(text);
  return taken < columns ? std::string(columns - taken, ' ') + text : text;
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = CharacterAt(text, at);
    if (!character.valid || character.code < 0x20 || character.code == 0x7f) {
      fmt::format_to(std::back_inserter(escaped), "\\x{:02x}",
                     static_cast<unsigned char>(text[at]));
    } else if (Within(kExecuted, character.code)) {
      fmt::format_to(std::back_inserter(escaped), "\\u{:04x}",
                     static_cast<std::uint32_t>(character.code));
    } else {
      escaped.append(text, at, character.bytes);
    }
    at += character.bytes;
  }
  return escaped;
}

std::string ShownID(const std::string& id) {
  return id.empty() ? "(no ID)" : Escaped(id);
}

std::string JoinNames(const std::vector<std::string>& names, std::size_t most) {
  std::string text;
  const std::size_t shown = std::min(most, names.size());
  for (std::size_t i = 0; i < shown; ++i) {
    const bool last = i + 1 == names.size();
    if (i > 0) text += last ? " and " : ", ";
    text += ShownID(names[i]);
  }
  if (shown < names.size()) text += fmt::format(" and {} more", names.size() - shown);
  return text;
}

std::string Count(std::size_t number, const std::string& what) {
  return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}
