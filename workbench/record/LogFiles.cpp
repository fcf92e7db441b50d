#include "workbench/record/LogFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 1U << 20U;
constexpr std::size_t kLongestLine = 1U << 18U;
constexpr std::size_t kMostDigits = 3;  // of a number; more are a date

struct Numbered {
  fs::path base;  // the path without the number
  int number = 0;
};

bool IsNumber(const std::string& text) {
  return !text.empty() && text.size() <= kMostDigits &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

/// The number in a name like hub.2.log or hub.log.2; 0 for none.
Numbered TakeNumber(const fs::path& file) {
  const fs::path extension = file.extension();
  const fs::path stem = file.stem();
  const auto digits = [](const fs::path& part) {
    const std::string text = part.u8string();
    return text.empty() ? text : text.substr(1);
  };
  if (IsNumber(digits(extension))) {
    return {file.parent_path() / stem, std::stoi(digits(extension))};
  }
  if (IsNumber(digits(stem.extension()))) {
    fs::path base = file.parent_path() / stem.stem();
    base += extension;
    return {base, std::stoi(digits(stem.extension()))};
  }
  return {file, 0};
}

/// The names that the renamed file `number` of a log may have.
std::vector<fs::path> Renamed(const fs::path& file, int number) {
  fs::path inside = file.parent_path() / file.stem();
  inside += "." + std::to_string(number);
  inside += file.extension();
  fs::path behind = file;
  behind += "." + std::to_string(number);
  return {inside, behind};
}

bool IsFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

using Group = std::map<int, fs::path, std::greater<>>;  // by number

void AddRenamed(Group& group, const fs::path& file) {
  for (int number = 1;; ++number) {
    bool found = false;
    for (const fs::path& renamed : Renamed(file, number)) {
      if (!IsFile(renamed)) continue;
      group.emplace(number, renamed);
      found = true;
    }
    if (!found) return;
  }
}

}  // namespace

void VisitLines(const fs::path& file, const std::function<void(std::string_view)>& visit) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    const std::string reason = std::error_code(errno, std::generic_category()).message();
    throw std::runtime_error(file.u8string() + " cannot be opened: " + reason);
  }
  std::vector<char> block(kLongestLine + kBlock);
  std::size_t kept = 0;    // bytes of an incomplete line at the block's start
  bool isTooLong = false;  // the rest of a line that is left out
  while (stream) {
    stream.read(block.data() + kept, kBlock);
    const char* const end = block.data() + kept + stream.gcount();
    const char* begin = block.data();
    while (const void* feed = std::memchr(begin, '\n', static_cast<std::size_t>(end - begin))) {
      const char* const lineEnd = static_cast<const char*>(feed);
      if (!isTooLong) visit({begin, static_cast<std::size_t>(lineEnd - begin)});
      isTooLong = false;
      begin = lineEnd + 1;
    }
    kept = static_cast<std::size_t>(end - begin);
    if (kept > kLongestLine) {
      kept = 0;
      isTooLong = true;
    }
    std::memmove(block.data(), begin, kept);
  }
  if (kept > 0 && !isTooLong) visit({block.data(), kept});
}

std::vector<LogFileGroup> GroupLogFiles(const std::vector<fs::path>& files) {
  std::vector<fs::path> bases;  // in the order in which they were given
  std::map<fs::path, Group> groups;
  for (const fs::path& file : files) {
    const Numbered numbered = TakeNumber(file.lexically_normal());
    if (groups.count(numbered.base) == 0) bases.push_back(numbered.base);
    Group& group = groups[numbered.base];
    group.emplace(numbered.number, file);
    if (numbered.number == 0) AddRenamed(group, file);
  }
  std::vector<LogFileGroup> all;
  for (const fs::path& base : bases) {
    LogFileGroup& group = all.emplace_back();
    for (const auto& [number, file] : groups[base]) group.push_back(file);
  }
  return all;
}
