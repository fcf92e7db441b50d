#include "reference/os/LocalText.h"

#include <cstdint>

namespace {

constexpr std::uint32_t kRawByte = 0xDC00;  // plus a byte from 0x80 on

/// One UTF-8 sequence: its code point and length; the length is 0 when it is not valid.
struct Sequence {
  std::uint32_t code = 0;
  std::size_t length = 0;
};

Sequence Decode(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(at);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || at + length > text.size()) return {};
  std::uint32_t code = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xC0U) != 0x80U) return {};
    code = code << 6U | (byte(at + i) & 0x3FU);
  }
  constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < smallest[length] || code > 0x10FFFF || surrogate) return {};
  return {code, length};
}

void Encode(std::string& text, std::uint32_t code) {
  const auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0U | code >> 6U);
    put(0x80U | (code & 0x3FU));
  } else if (code < 0x10000) {
    put(0xE0U | code >> 12U);
    put(0x80U | (code >> 6U & 0x3FU));
    put(0x80U | (code & 0x3FU));
  } else {
    put(0xF0U | code >> 18U);
    put(0x80U | (code >> 12U & 0x3FU));
    put(0x80U | (code >> 6U & 0x3FU));
    put(0x80U | (code & 0x3FU));
  }
}

}  // namespace

std::wstring WideFromLocal(const std::string& text) {
  std::wstring wide;
  for (std::size_t at = 0; at < text.size();) {
    const Sequence sequence = Decode(text, at);
    if (sequence.length == 0) {
      wide += static_cast<wchar_t>(kRawByte + static_cast<unsigned char>(text[at]));
      ++at;
    } else {
      wide += static_cast<wchar_t>(sequence.code);
      at += sequence.length;
    }
  }
  return wide;
}

std::string LocalFromWide(const std::wstring& text) {
  std::string local;
  for (const wchar_t character : text) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c): no character is negative
    const auto code = static_cast<std::uint32_t>(character);
    if (code >= kRawByte + 0x80 && code <= kRawByte + 0xFF) {
      local += static_cast<char>(code - kRawByte);
    } else {
      Encode(local, code);
    }
  }
  return local;
}

std::filesystem::path PathFromLocal(const std::string& text) {
  return text;
}

std::string LocalFromPath(const std::filesystem::path& path) {
  return path.string();
}
