#include "workbench/check/TextEncoding.h"

#include <algorithm>
#include <cstddef>

namespace {

unsigned char ByteAt(const std::string& text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

/// How many bytes the character has that begins at `at`; 0 when no UTF-8 begins there.
std::size_t CharacterLength(const std::string& text, std::size_t at) {
  const unsigned char first = ByteAt(text, at);
  if (first < 0x80U) return 1;
  const std::size_t length = first < 0xE0U ? 2 : first < 0xF0U ? 3 : 4;
  if (first < 0xC2U || first > 0xF4U || text.size() - at < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(text, at + i) & 0xC0U) != 0x80U) return 0;
  }
  // Longer than necessary, surrogates, and beyond the last character.
  const unsigned char second = ByteAt(text, at + 1);
  const bool isWrong = (first == 0xE0U && second < 0xA0U) || (first == 0xEDU && second >= 0xA0U) ||
                       (first == 0xF0U && second < 0x90U) || (first == 0xF4U && second >= 0x90U);
  return isWrong ? 0 : length;
}

}  // namespace

std::optional<BadByte> FirstBadByte(const std::string& text) {
  TextPlace place = {1, 1};
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = CharacterLength(text, at);
    if (length == 0) return BadByte{ByteAt(text, at), place};
    if (text[at] == '\n') {
      ++place.line;
      place.column = 1;
    } else {
      ++place.column;
    }
    at += length;
  }
  return std::nullopt;
}

std::string WideEncoding(const std::string& text) {
  struct Beginning {
    std::string bytes;
    const char* encoding;
  };
  static const Beginning beginnings[] = {{std::string("\xFF\xFE\0\0", 4), "UTF-32"},
                                         {std::string("\0\0\xFE\xFF", 4), "UTF-32"},
                                         {std::string("<\0\0\0", 4), "UTF-32"},
                                         {std::string("\0\0\0<", 4), "UTF-32"},
                                         {"\xFF\xFE", "UTF-16"},
                                         {"\xFE\xFF", "UTF-16"},
                                         {std::string("<\0", 2), "UTF-16"},
                                         {std::string("\0<", 2), "UTF-16"}};
  for (const Beginning& one : beginnings) {
    if (text.compare(0, one.bytes.size(), one.bytes) == 0) return one.encoding;
  }
  return std::string();
}
