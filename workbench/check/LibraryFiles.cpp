#include "workbench/check/LibraryFiles.h"

#include <algorithm>
#include <system_error>

#include "workbench/product/LoaderCache.h"

namespace fs = std::filesystem;

namespace {

using State = NeededLibrary::State;

std::string FolderOf(const std::string& path) {
  const std::size_t end = path.rfind('/');
  return end == std::string::npos ? std::string() : path.substr(0, end);
}

std::string FileName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string Joined(const std::string& folder, const std::string& name) {
  return folder + "/" + name;
}

bool StartsWith(const std::string& text, const char* begin) {
  return text.rfind(begin, 0) == 0;
}

/// A folder of an RPATH or RUNPATH: $ORIGIN is the folder of the library that has it. Empty when it
/// cannot be known: the run's current folder, or a name that depends on the processor.
std::string Expanded(std::string folder, const std::string& origin) {
  for (const std::string word : {"${ORIGIN}", "$ORIGIN"}) {
    for (std::size_t at = folder.find(word); at != std::string::npos; at = folder.find(word)) {
      folder.replace(at, word.size(), origin);
    }
  }
  return folder.find('$') == std::string::npos ? folder : std::string();
}

}  // namespace

std::string SmallLetters(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool LibraryFile::Defines(std::string_view name) {
  if (!defined) {
    defined.emplace();
    defined->reserve(header.exported.size());
    for (const ExportedSymbol& symbol : header.exported) defined->insert(symbol.name);
  }
  return defined->count(name) != 0;
}

LibraryFiles::LibraryFiles(const LibrarySystem& system, const LocalNames& names)
    : m_system(system), m_names(names) {
  for (const fs::path& folder : system.environmentFolders) m_environment.push_back(Text(folder));
  for (const fs::path& folder : system.folders) m_folders.push_back(Text(folder));
  m_executable = Open(Text(system.executable));
  if (!IsSystemKnown()) return;
  if (!IsPe()) m_cache = ReadLoaderCache(system.cache);
  const std::deque<LoadedFile> own = Load(*m_executable);
  for (const LoadedFile& loaded : own) {
    loaded.file->isGlobal = true;
    for (const ExportedSymbol& symbol : loaded.file->header.exported) {
      m_globalNames.insert(symbol.name);
    }
    AddName(FileName(loaded.file->path), *loaded.file, m_loaded);
  }
  for (const fs::path& path : system.loaded) {
    LibraryFile* file = Open(Text(path));
    if (file == nullptr) continue;
    for (const LoadedFile& loaded : Load(*file)) {
      AddName(FileName(loaded.file->path), *loaded.file, m_loaded);
    }
  }
}

std::string LibraryFiles::Text(const fs::path& path) const {
  return m_names.fromPath(fs::path(path.generic_string<fs::path::value_type>()));
}

bool LibraryFiles::IsPe() const {
  return m_executable->header.format == LibraryHeader::Format::kPe;
}

bool LibraryFiles::Fits(const LibraryHeader& header) const {
  if (!IsSystemKnown()) return true;
  const LibraryHeader& program = m_executable->header;
  return header.format == program.format && header.machine == program.machine &&
         header.is64 == program.is64;
}

LibraryFile* LibraryFiles::Open(const std::string& path) {
  const auto [known, isNew] = m_byPath.emplace(path, nullptr);
  if (!isNew) return known->second;
  LibraryHeader header = ReadLibraryHeader(m_names.toPath(path));
  if (header.format == LibraryHeader::Format::kUnreadable) return nullptr;
  m_files.emplace_back();
  LibraryFile& file = m_files.back();
  file.path = path;
  file.folder = FolderOf(path);
  file.header = std::move(header);
  known->second = &file;
  return &file;
}

std::string LibraryFiles::Key(const std::string& name) const {
  return IsPe() ? SmallLetters(name) : name;
}

void LibraryFiles::AddName(const std::string& name, LibraryFile& file, Names& names) const {
  names.emplace(Key(name), &file);
  if (!file.header.soname.empty()) names.emplace(file.header.soname, &file);
}

std::deque<LoadedFile> LibraryFiles::Load(LibraryFile& first) {
  std::deque<LoadedFile> loaded = {{&first, nullptr, {}}};
  std::unordered_set<const LibraryFile*> known = {&first};
  Names names;
  if (!first.header.soname.empty()) names.emplace(first.header.soname, &first);
  for (std::size_t i = 0; i < loaded.size(); ++i) {
    LoadedFile& user = loaded[i];
    // What belongs to Windows is complete.
    if (IsPe() && user.loader != nullptr && !IsOwn(*user.file, *user.loader)) continue;
    for (std::size_t needed = 0; needed < user.file->header.needed.size(); ++needed) {
      user.needs.push_back(Needed(user, needed, names));
      const FoundLibrary& found = user.needs.back();
      if (found.state != State::kFound || found.file == nullptr) continue;
      AddName(found.name, *found.file, names);
      const bool isNew = !found.file->isGlobal && known.insert(found.file).second;
      if (isNew) loaded.push_back({found.file, &user, {}});
    }
  }
  return loaded;
}

/// The loader takes a library that it has loaded by the same name, and otherwise searches.
FoundLibrary LibraryFiles::Needed(const LoadedFile& user, std::size_t index, const Names& names) {
  const std::string& name = user.file->header.needed[index];
  for (const Names* loaded : {static_cast<const Names*>(&m_loaded), &names}) {
    const auto found = loaded->find(Key(name));
    if (found != loaded->end()) return {name, State::kFound, found->second};
  }
  bool dependsOnLoader = false;  // by an RPATH that it inherits
  for (const LoadedFile* by = user.loader; by != nullptr; by = by->loader) {
    if (!by->file->header.rpath.empty()) dependsOnLoader = true;
  }
  if (dependsOnLoader) return Find(name, user);
  std::vector<std::optional<FoundLibrary>>& known = user.file->found;
  known.resize(user.file->header.needed.size());
  if (!known[index]) known[index] = Find(name, user);
  return *known[index];
}

FoundLibrary LibraryFiles::Find(const std::string& name, const LoadedFile& user) {
  FoundLibrary found;
  found.name = name;
  LibraryFile* skipped = nullptr;
  found.file = IsPe() ? FindPe(name) : FindElf(name, user, skipped);
  if (found.file != nullptr) {
    const bool isUsable = Fits(found.file->header) && !found.file->header.broken;
    found.state = isUsable ? State::kFound : State::kUnusable;
    return found;
  }
  const std::string small = SmallLetters(name);
  if (IsPe() && (StartsWith(small, "api-ms-") || StartsWith(small, "ext-ms-"))) {
    found.state = State::kFound;  // the system maps these names to its own libraries
    return found;
  }
  LibraryFile* beside =
      name.find('/') == std::string::npos ? Open(Joined(user.file->folder, name)) : nullptr;
  if (beside != nullptr && Fits(beside->header)) {
    found.file = beside;
    found.state = State::kBeside;
  } else if (skipped != nullptr || beside != nullptr) {
    found.file = skipped != nullptr ? skipped : beside;
    found.state = State::kOtherMachine;
  }
  return found;
}

/// In the RPATH of the library, of those because of which it is loaded, and of the program. Beside
/// a RUNPATH an RPATH does not count.
LibraryFile* LibraryFiles::InRpaths(const std::string& name, const LoadedFile& user,
                                    LibraryFile*& skipped) {
  std::vector<const LibraryFile*> owners;
  for (const LoadedFile* by = &user; by != nullptr; by = by->loader) owners.push_back(by->file);
  if (owners.back() != m_executable) owners.push_back(m_executable);
  for (const LibraryFile* owner : owners) {
    if (!owner->header.runpath.empty()) continue;
    if (LibraryFile* found = InFolders(owner->header.rpath, *owner, name, skipped)) return found;
  }
  return nullptr;
}

LibraryFile* LibraryFiles::FindElf(const std::string& name, const LoadedFile& user,
                                   LibraryFile*& skipped) {
  const LibraryFile& file = *user.file;
  if (name.find('/') != std::string::npos) return Open(Expanded(name, file.folder));
  LibraryFile* found = nullptr;
  if (file.header.runpath.empty()) found = InRpaths(name, user, skipped);
  for (const std::string& folder : m_environment) {
    if (found == nullptr) found = InFolder(folder, name, skipped);
  }
  if (found == nullptr) found = InFolders(file.header.runpath, file, name, skipped);
  const auto cached = m_cache.find(name);
  if (found == nullptr && cached != m_cache.end()) {
    for (const std::string& path : cached->second) {
      if (found == nullptr) found = Suitable(path, skipped);
    }
  }
  for (const std::string& folder : m_folders) {
    if (found == nullptr) found = InFolder(folder, name, skipped);
  }
  return found;
}

LibraryFile* LibraryFiles::FindPe(const std::string& name) {
  for (const std::string& folder : m_folders) {
    LibraryFile* file = Open(Joined(folder, name));
    if (file == nullptr && m_system.ignoresCase) {
      const std::string other = OtherCase(folder, name);
      if (!other.empty()) file = Open(Joined(folder, other));
    }
    if (file != nullptr) return file;
  }
  return nullptr;
}

LibraryFile* LibraryFiles::InFolders(const std::string& folders, const LibraryFile& owner,
                                     const std::string& name, LibraryFile*& skipped) {
  for (std::size_t begin = 0; begin < folders.size();) {
    const std::size_t end = std::min(folders.find(':', begin), folders.size());
    const std::string folder = Expanded(folders.substr(begin, end - begin), owner.folder);
    if (!folder.empty()) {
      if (LibraryFile* found = InFolder(folder, name, skipped)) return found;
    }
    begin = end + 1;
  }
  return nullptr;
}

LibraryFile* LibraryFiles::InFolder(const std::string& folder, const std::string& name,
                                    LibraryFile*& skipped) {
  return Suitable(fs::path(folder).lexically_normal().generic_string() + "/" + name, skipped);
}

/// The loader skips an ELF file for another machine, and only that.
LibraryFile* LibraryFiles::Suitable(const std::string& path, LibraryFile*& skipped) {
  LibraryFile* file = Open(path);
  if (file == nullptr) return nullptr;
  const bool isElf = file->header.format == LibraryHeader::Format::kElf;
  if (!isElf || Fits(file->header)) return file;
  skipped = file;
  return nullptr;
}

std::string LibraryFiles::OtherCase(const std::string& folder, const std::string& name) {
  const auto [listing, isNew] = m_listings.try_emplace(folder);
  if (isNew) {
    std::error_code error;
    fs::directory_iterator entry(m_names.toPath(folder), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      const std::string found = m_names.fromPath(entry->path().filename());
      listing->second.emplace(SmallLetters(found), found);
    }
  }
  const auto found = listing->second.find(SmallLetters(name));
  return found == listing->second.end() || found->second == name ? std::string() : found->second;
}
