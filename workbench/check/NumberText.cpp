#include "workbench/check/NumberText.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>

std::string WithoutBlanks(const std::string& text) {
  constexpr char kBlanks[] = " \t\r\n\v\f";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return std::string();
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool IsNumber(const std::string& text) {
  const std::size_t begin = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  return begin < text.size() && text.find_first_not_of("0123456789", begin) == std::string::npos;
}

bool ExceedsInt(const std::string& text) {
  errno = 0;
  const long long value = std::strtoll(text.c_str(), nullptr, 10);
  return errno == ERANGE || value > std::numeric_limits<int>::max() ||
         value < std::numeric_limits<int>::min();
}

bool IsPlainNumber(const std::string& text) {
  return IsNumber(WithoutBlanks(text)) && !ExceedsInt(text);
}
