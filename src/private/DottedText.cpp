#include "src/private/DottedText.h"

#include <algorithm>
#include <cstddef>

std::string GroupNameOf(const std::string& id) {
  const std::size_t dot = id.find('.');
  return dot == std::string::npos ? std::string() : id.substr(0, dot);
}

std::string ShortVersionOf(const std::string& version) {
  std::string shortened;
  int parts = 0;
  std::size_t begin = 0;
  while (parts < 3 && (begin = version.find_first_not_of('.', begin)) != std::string::npos) {
    const std::size_t end = std::min(version.find('.', begin), version.size());
    if (parts > 0) shortened += '.';
    shortened.append(version, begin, end - begin);
    ++parts;
    begin = end;
  }
  return parts == 3 ? shortened : std::string();
}
