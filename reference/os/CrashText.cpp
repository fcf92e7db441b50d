#include "reference/os/CrashText.h"

#include <algorithm>
#include <cstring>

CrashText& CrashText::Add(std::string_view text) noexcept {
  const std::size_t count = std::min(text.size(), kLongest - m_size);
  std::memcpy(m_text + m_size, text.data(), count);
  m_size += count;
  m_text[m_size] = '\0';
  return *this;
}

CrashText& CrashText::AddEscaped(std::string_view text) noexcept {
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte != 0x7f) {
      Add({&character, 1});
      continue;
    }
    constexpr const char* digits = "0123456789abcdef";
    const char escaped[] = {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
    Add({escaped, sizeof(escaped)});
  }
  return *this;
}

CrashText& CrashText::AddNumber(std::int64_t number) noexcept {
  char digits[20];
  std::size_t at = sizeof(digits);
  // Negated as unsigned, since the smallest int64_t cannot be negated.
  auto rest = static_cast<std::uint64_t>(number);
  if (number < 0) rest = 0 - rest;
  do {
    digits[--at] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (number < 0) digits[--at] = '-';
  return Add({digits + at, sizeof(digits) - at});
}

CrashText& CrashText::AddHex(std::uint64_t number) noexcept {
  char digits[16];
  std::size_t at = sizeof(digits);
  do {
    digits[--at] = "0123456789abcdef"[number % 16];
    number /= 16;
  } while (number != 0);
  return Add("0x").Add({digits + at, sizeof(digits) - at});
}

bool WriteCrashText(SystemFile file, std::string_view text) noexcept {
  constexpr int longestWait = 2000;
  return WriteWhole(file, text, longestWait);
}
