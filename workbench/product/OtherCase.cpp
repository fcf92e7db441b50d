#include "workbench/product/OtherCase.h"

#include <string>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Name = fs::path::string_type;

Name Lower(Name name) {
  for (auto& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<Name::value_type>(c - 'A' + 'a');
  }
  return name;
}

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

/// The entries of `folder` whose name is `name`, ignoring letter case; the exact name first.
std::vector<fs::path> Candidates(const fs::path& folder, const fs::path& name) {
  std::vector<fs::path> candidates;
  if (Exists(folder / name)) candidates.push_back(folder / name);
  const Name lower = Lower(name.native());
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const fs::path there = entry->path().filename();
    if (there != name && Lower(there.native()) == lower) candidates.push_back(entry->path());
  }
  return candidates;
}

/// The first existing path below `folder` that matches `parts` from index `part` on.
std::optional<fs::path> Search(const fs::path& folder, const std::vector<fs::path>& parts,
                               std::size_t part) {
  if (part == parts.size()) return folder;
  for (const fs::path& candidate : Candidates(folder, parts[part])) {
    if (auto found = Search(candidate, parts, part + 1)) return found;
  }
  return std::nullopt;
}

}  // namespace

std::optional<fs::path> FileWithOtherCase(const fs::path& wanted) {
  if (wanted.empty() || Exists(wanted)) return std::nullopt;
  std::vector<fs::path> parts;
  fs::path folder = wanted;
  while (folder.has_relative_path() && !Exists(folder)) {
    parts.insert(parts.begin(), folder.filename());
    folder = folder.parent_path();
  }
  if (folder.empty()) folder = ".";
  return Search(folder, parts, 0);
}
