#include "workbench/record/OneLine.h"

std::string OneLine(const std::string& text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string line;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      line += c;
      continue;
    }
    line += "\\x";
    line += digits[byte >> 4U];
    line += digits[byte & 0xFU];
  }
  return line;
}
