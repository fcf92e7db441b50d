#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "workbench/check/LibrarySystem.h"
#include "workbench/check/PluginLibrary.h"
#include "workbench/product/LibraryHeader.h"
#include "workbench/product/LocalNames.h"

struct LibraryFile;

/// A library that a file needs, and which file the loader takes.
struct FoundLibrary {
  std::string name;
  NeededLibrary::State state = NeededLibrary::State::kNowhere;
  LibraryFile* file = nullptr;  // null: nowhere, or a library that only the system has
};

/// A file that was opened as a library or program. Belongs to LibraryFiles.
struct LibraryFile {
  std::string path;
  std::string folder;  // that contains it
  LibraryHeader header;
  bool isGlobal = false;                           // the program offers its symbols to every plugin
  std::vector<std::optional<FoundLibrary>> found;  // what it needs, once searched
  std::optional<std::unordered_set<std::string_view>> defined;  // once it was asked for

  bool Defines(std::string_view name);
};

/// A file that is loaded together with another one.
struct LoadedFile {
  LibraryFile* file = nullptr;
  const LoadedFile* loader = nullptr;  // because of which it is loaded; null for the first
  std::vector<FoundLibrary> needs;
};

/// The files that are needed to load a product's libraries, each read once, found in the order in
/// which the system's loader looks. Not thread-safe.
class LibraryFiles {
 public:
  LibraryFiles(const LibrarySystem& system, const LocalNames& names);

  /// The file at `path`, with "/" between names; null when there is none.
  LibraryFile* Open(const std::string& path);

  const LibraryFile* Executable() const { return m_executable; }

  /// Whether the program can be read; otherwise it is not known how libraries are found.
  bool IsSystemKnown() const {
    return m_executable != nullptr && m_executable->header.IsLibraryFile();
  }

  /// Whether the loader can use the file: the program's format, machine and word size.
  bool Fits(const LibraryHeader& header) const;

  /// Only for a known system: the files that are loaded with `first`, which comes first, in the
  /// loader's order; without those that the program has loaded before.
  std::deque<LoadedFile> Load(LibraryFile& first);

  /// Whether a library that the program has loaded defines `name`, for every plugin.
  bool IsGlobal(std::string_view name) const { return m_globalNames.count(name) != 0; }

  /// Whether the PE file, which `user` needs, belongs to HUB or the product and not to Windows.
  bool IsOwn(const LibraryFile& file, const LoadedFile& user) const {
    return file.folder == user.file->folder || file.folder == m_executable->folder;
  }

  /// The name in `folder` that differs from `name` only in letter case; empty for none.
  std::string OtherCase(const std::string& folder, const std::string& name);

  std::string Text(const std::filesystem::path& path) const;

 private:
  using Names = std::unordered_map<std::string, LibraryFile*>;

  FoundLibrary Find(const std::string& name, const LoadedFile& user);
  LibraryFile* FindElf(const std::string& name, const LoadedFile& user, LibraryFile*& skipped);
  LibraryFile* FindPe(const std::string& name);
  LibraryFile* InRpaths(const std::string& name, const LoadedFile& user, LibraryFile*& skipped);
  LibraryFile* InFolders(const std::string& folders, const LibraryFile& owner,
                         const std::string& name, LibraryFile*& skipped);
  LibraryFile* InFolder(const std::string& folder, const std::string& name, LibraryFile*& skipped);
  LibraryFile* Suitable(const std::string& path, LibraryFile*& skipped);
  FoundLibrary Needed(const LoadedFile& user, std::size_t index, const Names& names);
  void AddName(const std::string& name, LibraryFile& file, Names& names) const;
  std::string Key(const std::string& name) const;
  bool IsPe() const;

  const LibrarySystem& m_system;
  const LocalNames& m_names;
  std::vector<std::string> m_environment;
  std::vector<std::string> m_folders;
  std::unordered_map<std::string, std::vector<std::string>> m_cache;
  std::deque<LibraryFile> m_files;
  std::unordered_map<std::string, LibraryFile*> m_byPath;  // null: there is none
  Names m_loaded;                                          // by the program, before the plugins
  std::map<std::string, std::map<std::string, std::string>> m_listings;  // in small letters
  LibraryFile* m_executable = nullptr;
  std::unordered_set<std::string_view> m_globalNames;
};

/// `text` with ASCII letters made small.
std::string SmallLetters(std::string text);
