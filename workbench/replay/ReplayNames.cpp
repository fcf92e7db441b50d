#include "workbench/replay/ReplayNames.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace {

constexpr std::size_t kLongest = 100;

std::string LowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Windows takes such a file for a device, whatever its extension.
bool IsDevice(const std::string& lowerCase) {
  static const std::set<std::string> devices = {"con", "prn", "aux", "nul"};
  const std::string name = lowerCase.substr(0, lowerCase.find('.'));
  if (devices.count(name) != 0) return true;
  const bool isPort = name.compare(0, 3, "com") == 0 || name.compare(0, 3, "lpt") == 0;
  return isPort && name.size() == 4 && name[3] >= '0' && name[3] <= '9';
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// "stub-07" when there are 10 to 99 names.
std::string Numbered(const char* word, std::size_t number, std::size_t count) {
  const std::string digits = std::to_string(number);
  const std::size_t width = std::to_string(count).size();
  return word + std::string(width - digits.size(), '0') + digits;
}

}  // namespace

bool IsPortableID(const std::string& id) {
  if (id.empty() || id.size() > kLongest || id.front() == '.' || id.back() == '.') return false;
  const bool hasOnlyThese = std::all_of(id.begin(), id.end(), [](char c) {
    return IsLetterOrDigit(c) || c == '.' || c == '-' || c == '_';
  });
  const std::string lowerCase = LowerCase(id);
  return hasOnlyThese && id.find("..") == std::string::npos && !IsDevice(lowerCase) &&
         !EndsWith(lowerCase, ".xml") && !EndsWith(lowerCase, ".data");
}

std::vector<std::string> ReplayNames(const std::vector<std::string>& ids, bool anonymous) {
  std::vector<std::string> names(ids.size());
  std::set<std::string> taken;
  for (std::size_t i = 0; i < ids.size() && !anonymous; ++i) {
    if (IsPortableID(ids[i]) && taken.insert(LowerCase(ids[i])).second) names[i] = ids[i];
  }
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (!names[i].empty()) continue;
    names[i] = Numbered(anonymous ? "plugin-" : "stub-", i + 1, ids.size());
    while (!taken.insert(LowerCase(names[i])).second) names[i] += "-x";
  }
  return names;
}
