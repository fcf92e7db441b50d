#include "workbench/record/HostLine.h"

#include <charconv>

namespace {

constexpr std::string_view kStamp = "dddd-dd-dd dd:dd:dd.ddd#dd:dd ";  // d: a digit, #: a sign
constexpr std::size_t kMostPlaces = 200;

bool IsStamp(std::string_view text) {
  if (text.size() < kStamp.size()) return false;
  for (std::size_t i = 0; i < kStamp.size(); ++i) {
    const char c = text[i];
    const bool fits = kStamp[i] == 'd'   ? c >= '0' && c <= '9'
                      : kStamp[i] == '#' ? c == '+' || c == '-'
                                         : c == kStamp[i];
    if (!fits) return false;
  }
  return true;
}

/// Removes "[NUMBER] " from the start of `rest`.
template <typename Number>
bool TakeNumber(std::string_view& rest, Number& number) {
  if (rest.empty() || rest.front() != '[') return false;
  const char* const end = rest.data() + rest.size();
  const auto read = std::from_chars(rest.data() + 1, end, number);
  if (read.ec != std::errc() || end - read.ptr < 2) return false;
  if (read.ptr[0] != ']' || read.ptr[1] != ' ') return false;
  rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()) + 2);
  return true;
}

}  // namespace

std::optional<HostLine> ReadHostLine(std::string_view line) {
  if (!IsStamp(line)) return std::nullopt;
  HostLine read;
  std::string_view rest = line.substr(kStamp.size());
  if (!TakeNumber(rest, read.level) || !TakeNumber(rest, read.thread)) return std::nullopt;
  const std::size_t end = rest.find("] ");
  if (end == std::string_view::npos || rest.front() != '[') return std::nullopt;
  read.module = rest.substr(1, end - 1);
  read.text = rest.substr(end + 2);
  read.moduleAndText = rest;
  return read;
}

std::optional<std::size_t> FindHostLine(std::string_view line) {
  for (std::size_t begin = 0; begin < line.size() && begin < kMostPlaces; ++begin) {
    if (ReadHostLine(line.substr(begin))) return begin;
  }
  return std::nullopt;
}
