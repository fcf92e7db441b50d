#include "workbench/product/Libraries.h"

#include <algorithm>
#include <cctype>
#include <deque>
#include <functional>
#include <set>
#include <system_error>

#include "workbench/product/LibraryHeader.h"
#include "workbench/product/OtherCase.h"

namespace fs = std::filesystem;

namespace {

using Format = LibraryHeader::Format;

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

/// Whether `folder` contains a file of this name; letter case is ignored, as on Windows.
bool ContainsFile(const fs::path& folder, const std::string& name) {
  return Exists(folder / name) || FileWithOtherCase(folder / name).has_value();
}

bool IsNamePart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == '_' || c == '-' ||
         c == '+';
}

/// Whether `words` contain the file name `name`, not as part of a longer name.
bool ContainsFileName(const std::string& words, const std::string& name) {
  for (std::size_t at = words.find(name); at != std::string::npos; at = words.find(name, at + 1)) {
    const std::size_t end = at + name.size();
    const bool begins = at == 0 || !IsNamePart(words[at - 1]);
    if (begins && (end == words.size() || !IsNamePart(words[end]))) return true;
  }
  return false;
}

/// A needed library that could not be found.
struct Missing {
  std::string name;
  std::string neededBy;  // a library in the same folder; empty: the plugin's library itself
};

/// The first needed library for which `isMissing` is true: of the plugin's library, then of the
/// needed libraries in the same folder. The name is empty when there is none.
Missing FindMissing(const fs::path& library, const LibraryHeader& header,
                    const std::function<bool(const std::string&)>& isMissing) {
  std::deque<std::pair<std::string, std::vector<std::string>>> queue = {{"", header.needed}};
  std::set<std::string> seen;
  for (; !queue.empty(); queue.pop_front()) {
    for (const std::string& name : queue.front().second) {
      if (isMissing(name)) return {name, queue.front().first};
      const fs::path beside = library.parent_path() / name;
      if (!seen.insert(name).second || !Exists(beside)) continue;
      queue.emplace_back(name, ReadLibraryHeader(beside).needed);
    }
  }
  return Missing();
}

/// "needs libx.so, which "; when another library needs it: "needs liby.so, which needs libx.so,
/// which ".
std::string NeedsClause(const Missing& missing) {
  const std::string way = missing.neededBy.empty() ? "" : missing.neededBy + ", which needs ";
  return "needs " + way + missing.name + ", which ";
}

std::string OtherMachine(const LibraryHeader& header, const LibraryHeader& program) {
  return "is for " + header.machine + ", this program for " + program.machine;
}

bool IsForOtherMachine(const LibraryHeader& header, const LibraryHeader& program) {
  return header.format == program.format && !header.machine.empty() && !program.machine.empty() &&
         header.machine != program.machine;
}

std::string CaseHint(const fs::path& wanted, const LocalNames& names) {
  const auto other = FileWithOtherCase(wanted);
  if (!other) return std::string();
  const bool sameFolder = other->parent_path() == wanted.parent_path();
  return "; there is " + names.fromPath(sameFolder ? other->filename() : *other) +
         ", with other letter case";
}

/// Why the loader did not find a library that an ELF library needs; empty when the loader's message
/// has another reason.
std::string MissingElf(const fs::path& library, const LibraryHeader& header, std::string words,
                       const LibraryHeader& program, const LocalNames& names) {
  if (words.find("No such file or directory") == std::string::npos) return std::string();
  const std::string own = names.fromPath(library);
  if (words.compare(0, own.size(), own) == 0) words.erase(0, own.size());
  const Missing missing = FindMissing(
      library, header, [&](const std::string& name) { return ContainsFileName(words, name); });
  if (missing.name.empty()) return std::string();

  const fs::path beside = library.parent_path() / missing.name;
  if (!Exists(beside)) {
    return NeedsClause(missing) + "is in no folder where the loader looks" +
           CaseHint(beside, names);
  }
  const LibraryHeader there = ReadLibraryHeader(beside);
  if (IsForOtherMachine(there, program)) {
    return NeedsClause(missing) + OtherMachine(there, program);
  }
  return NeedsClause(missing) + "lies beside it but is not looked for there: link " +
         (missing.neededBy.empty() ? "the plugin" : missing.neededBy) + " with an RPATH of $ORIGIN";
}

/// Which library that a PE library needs does not exist; empty when all exist, or when it is not
/// known where the loader looks.
std::string MissingPe(const fs::path& library, const LibraryHeader& header,
                      const std::vector<fs::path>& folders) {
  if (folders.empty()) return std::string();
  const auto isMissing = [&](const std::string& name) {
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    // API set names, which the system maps to its own libraries.
    if (lower.compare(0, 7, "api-ms-") == 0 || lower.compare(0, 7, "ext-ms-") == 0) return false;
    if (ContainsFile(library.parent_path(), name)) return false;
    return std::none_of(folders.begin(), folders.end(),
                        [&](const fs::path& folder) { return ContainsFile(folder, name); });
  };
  const Missing missing = FindMissing(library, header, isMissing);
  return missing.name.empty()
             ? std::string()
             : NeedsClause(missing) + "is neither beside it nor in a folder where the loader looks";
}

const char* FormatName(Format format) {
  return format == Format::kElf ? "ELF" : "PE";
}

/// What is wrong with the library's file itself; empty when nothing is or it cannot be read.
std::string WrongFile(const fs::path& library, const LibraryHeader& header,
                      const LibraryHeader& program) {
  std::error_code error;
  if (fs::is_directory(library, error)) return "is a directory";
  if (header.format == Format::kUnreadable) return std::string();
  if (fs::file_size(library, error) == 0 && !error) return "is empty";
  if (header.format == Format::kNone) return "is no library: neither ELF nor PE";
  if (program.IsLibraryFile() && header.format != program.format) {
    return std::string("is a library of the format ") + FormatName(header.format) +
           ", this program needs " + FormatName(program.format);
  }
  if (IsForOtherMachine(header, program)) return OtherMachine(header, program);
  if (header.broken) {
    return std::string("is no sound ") + FormatName(header.format) +
           " library: it is cut short or damaged";
  }
  return std::string();
}

}  // namespace

std::optional<std::vector<std::string>> NeededLibraries(const fs::path& file) {
  LibraryHeader header = ReadLibraryHeader(file);
  if (!header.IsLibraryFile() || header.broken) return std::nullopt;
  return std::move(header.needed);
}

std::vector<std::string> ExportedNames(const fs::path& file) {
  std::vector<std::string> names;
  for (const ExportedSymbol& symbol : ReadLibraryHeader(file).exported) {
    names.emplace_back(symbol.name);
  }
  return names;
}

std::string WhyNotLoaded(const fs::path& library, const std::string& loaderWords,
                         const LoadingProgram& program, const LocalNames& names) {
  std::error_code error;
  if (fs::status(library, error).type() == fs::file_type::not_found) {
    return names.fromPath(library) + " does not exist" + CaseHint(library, names);
  }
  const LibraryHeader header = ReadLibraryHeader(library);
  const LibraryHeader loading = ReadLibraryHeader(program.executable);
  const std::string wrong = WrongFile(library, header, loading);
  if (!wrong.empty()) return names.fromPath(library) + " " + wrong;

  std::string missing;
  if (header.format == Format::kElf) {
    missing = MissingElf(library, header, loaderWords, loading, names);
  } else if (header.format == Format::kPe) {
    missing = MissingPe(library, header, program.folders);
  }
  return missing.empty() ? loaderWords : missing;
}
