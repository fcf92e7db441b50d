#include "reference/base/LogLine.h"

#include <spdlog/details/os.h>

namespace {

std::string Escaped(const std::string& text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      escaped += c;
      continue;
    }
    escaped += "\\x";
    escaped += digits[byte >> 4U];
    escaped += digits[byte & 0xFU];
  }
  return escaped;
}

}  // namespace

std::string LogLine(int level, const std::string& module, const std::string& text) {
  return "[" + std::to_string(level) + "] [" + std::to_string(spdlog::details::os::thread_id()) +
         "] [" + Escaped(module) + "] " + Escaped(text);
}
