#include <algorithm>
#include <cctype>
#include <regex>
#include <stdexcept>
#include <system_error>

#include "workbench/record/FlightRecord.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestName = 40;

bool IsSafe(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
         c == '-';
}

/// FNV-1a of 64 bits, as 16 hex digits: the same in every build and on every system.
std::string Hash(const std::string& text) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001b3U;
  }
  constexpr char digits[] = "0123456789abcdef";
  std::string hex;
  for (unsigned shift = 64; shift != 0;) {
    shift -= 4;
    hex += digits[(hash >> shift) & 0xFU];
  }
  return hex;
}

/// `path` without "." and ".." and without a separator at its end.
fs::path Normal(const fs::path& path) {
  const fs::path normal = path.lexically_normal();
  return normal.has_filename() ? normal : normal.parent_path();
}

std::string FolderName(const fs::path& product) {
  std::string name = product.parent_path().filename().u8string();
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !IsSafe(c); }, '-');
  name.resize(std::min(name.size(), kLongestName));
  return (name.empty() ? "" : name + "-") + Hash(product.generic_u8string());
}

/// The records in `folder`, the newest first.
std::vector<fs::path> Records(const fs::path& folder) {
  static const std::regex name("[0-9]{8}T[0-9]{6}\\.[0-9]{3}Z-[0-9]+\\.jsonl");
  std::vector<fs::path> records;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (std::regex_match(entry->path().filename().u8string(), name)) {
      records.push_back(entry->path());
    }
  }
  std::sort(records.rbegin(), records.rend());
  return records;
}

fs::path FolderOfAll(const fs::path& state) {
  return state / "TevPluginFrame" / "runs";
}

}  // namespace

RecordFolder::RecordFolder(const fs::path& state, const fs::path& product)
    : m_path(FolderOfAll(state) / FolderName(Normal(product))) {}

fs::path RecordFolder::NewRecord(const std::string& time, std::int64_t pid) const {
  std::error_code error;
  fs::create_directories(m_path, error);
  if (error) {
    throw std::runtime_error("the folder of the records, " + m_path.u8string() +
                             ", cannot be made: " + error.message());
  }
  std::string name = time;  // without '-' and ':'; Windows allows no colon in a name
  name.erase(std::remove_if(name.begin(), name.end(), [](char c) { return c == '-' || c == ':'; }),
             name.end());
  return m_path / (name + "-" + std::to_string(pid) + ".jsonl");
}

std::optional<fs::path> RecordFolder::Newest() const {
  const std::vector<fs::path> records = Records(m_path);
  if (records.empty()) return std::nullopt;
  return records.front();
}

void RecordFolder::Prune(const fs::path& spared) const {
  const std::vector<fs::path> records = Records(m_path);
  for (std::size_t i = kKept; i < records.size(); ++i) {
    std::error_code ignored;
    if (records[i] != spared) fs::remove(records[i], ignored);
  }
}

std::optional<fs::path> NewestRecord(const fs::path& state) {
  std::optional<fs::path> newest;
  std::error_code error;
  for (fs::directory_iterator folder(FolderOfAll(state), error), end; !error && folder != end;
       folder.increment(error)) {
    const std::vector<fs::path> records = Records(folder->path());
    if (records.empty()) continue;
    if (!newest || newest->filename() < records.front().filename()) newest = records.front();
  }
  return newest;
}
