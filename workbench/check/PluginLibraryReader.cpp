#include "workbench/check/PluginLibraryReader.h"

#include <algorithm>
#include <array>
#include <deque>
#include <fstream>
#include <unordered_map>
#include <utility>

#include "workbench/check/LibraryFiles.h"
#include "workbench/check/PluginLibrary.h"

namespace fs = std::filesystem;

namespace {

using Format = LibraryHeader::Format;
using State = PluginLibrary::State;

constexpr std::size_t kShortName = 12;  // of an entry that is spelt otherwise
constexpr std::size_t kMostSimilar = 100;

// Problems after which a plugin's other libraries are not looked at: many plugins may need one
// library that has many.
constexpr std::size_t kMostOfOthers = 5;

const char* FormatName(Format format) {
  return format == Format::kElf ? "ELF" : "PE";
}

State StateOf(const LibraryHeader& header, const LibraryFile* program, bool isProgram) {
  if (header.size == 0) return State::kEmpty;
  if (header.format == Format::kNone) return State::kNoLibrary;
  if (program != nullptr && program->header.IsLibraryFile()) {
    if (header.format != program->header.format) return State::kOtherFormat;
    const bool isSame =
        header.machine == program->header.machine && header.is64 == program->header.is64;
    if (!header.machine.empty() && !isSame) return State::kOtherMachine;
  }
  if (header.broken) return State::kDamaged;
  using Kind = LibraryHeader::Kind;
  // Position-independent programs are marked as programs only by some linkers.
  const bool isKind = isProgram ? header.kind != Kind::kOther : header.kind == Kind::kLibrary;
  return isKind ? State::kGood : State::kOtherKind;
}

/// Whether `name` is that of a C++ function `entry` outside of a class or namespace, by the rules
/// of GCC and Clang, or of Microsoft's compiler.
bool IsMangled(std::string_view name, const std::string& entry) {
  const std::string gcc = "_Z" + std::to_string(entry.size()) + entry;
  const std::string microsoft = "?" + entry + "@@Y";
  return name.substr(0, gcc.size()) == gcc || name.substr(0, microsoft.size()) == microsoft;
}

/// A file that the system runs with the program that its first line names.
bool IsScript(const fs::path& file) {
  std::array<char, 2> begin = {};
  std::ifstream(file, std::ios::binary).read(begin.data(), begin.size());
  return begin[0] == '#' && begin[1] == '!';
}

}  // namespace

class PluginLibraryReader::Reading {
 public:
  Reading(CheckedProduct& product, const fs::path& folder, const LocalNames& names,
          const LibrarySystem& system)
      : m_product(product), m_names(names), m_system(system), m_files(system, names) {
    m_folder = m_files.Text(folder);
    m_isBinWritableByAll = system.facts(names.toPath(m_folder + "/" + product.bin)).isWritableByAll;
    for (const std::string& name : product.names) m_small.emplace(SmallLetters(name), name);
  }

  void Read() {
    std::vector<NamedFile> named = NamedFiles();
    if (named == m_named) return;
    m_named = std::move(named);
    m_product.libraries.clear();
    m_read.clear();
    m_identities.clear();
    m_pluginOf.clear();
    for (const auto& [id, isProgram] : m_named) Add(id, isProgram);
    for (PluginFile& one : m_read) {
      if (one.file != nullptr) m_pluginOf.emplace(one.file, one.id);
    }
    if (m_files.IsSystemKnown()) ReadNeeds();
    for (PluginFile& one : m_read) m_product.libraries.emplace(one.id, std::move(one.library));
  }

 private:
  struct PluginFile {
    std::string id;
    std::shared_ptr<PluginLibrary> library;
    LibraryFile* file = nullptr;  // null unless it is a good library
  };

  using NamedFile = std::pair<std::string, bool>;  // ID of a plugin, and whether it is a program

  /// What the model names, each ID once.
  std::vector<NamedFile> NamedFiles() const {
    const ProductModel& model = m_product.model;
    std::vector<NamedFile> named;
    std::unordered_set<std::string> known;
    const auto add = [&](const std::string& id, bool isProgram) {
      if (!id.empty() && known.insert(id).second) named.emplace_back(id, isProgram);
    };
    for (const PluginDescription& plugin : model.ServerPluginDescriptions) add(plugin.ID, false);
    for (const SubPlatformEntry& platform : model.SubPlatforms) add(platform.ID, false);
    for (const PluginDescription& plugin : model.DriverPluginDescriptions) add(plugin.ID, false);
    for (const PluginDescription& plugin : model.ExePluginDescriptions) add(plugin.ID, true);
    return named;
  }

  void ReadNeeds() {
    for (PluginFile& one : m_read) {
      if (one.file == nullptr) continue;
      const std::deque<LoadedFile> loaded = m_files.Load(*one.file);
      if (one.file->header.format == Format::kElf) FindEntries(loaded, *one.library);
      AddNotFound(one, loaded);
      AddImports(one, loaded.front());
      if (one.library->notFound.empty()) AddMissing(one, loaded);
    }
  }

  void Add(const std::string& id, bool isProgram) {
    PluginFile one;
    one.id = id;
    one.library = std::make_shared<PluginLibrary>();
    PluginLibrary& library = *one.library;
    library.isProgram = isProgram;
    library.name = m_product.bin + "/" + (isProgram ? ProgramName(id) : id + ".dll");
    if (!m_product.Exists(library.name)) {
      const auto other = m_small.find(SmallLetters(library.name));
      if (other != m_small.end()) library.otherCase = other->second;
    }
    ReadFile(one);
    m_read.push_back(std::move(one));
  }

  /// The frame names a program by the ID by which the plugin is listed.
  std::string ProgramName(const std::string& id) const {
    const Description* kept = m_product.Kept(id);
    return (kept == nullptr ? id : kept->folder) + ".exe";
  }

  void ReadFile(PluginFile& one) {
    PluginLibrary& library = *one.library;
    const bool usesOther = m_system.ignoresCase && !library.otherCase.empty();
    const std::string path = m_folder + "/" + (usesOther ? library.otherCase : library.name);
    const FileFacts facts = m_system.facts(m_names.toPath(path));
    if (facts.kind != FileFacts::Kind::kFile) {
      const bool isFolder = facts.kind == FileFacts::Kind::kFolder;
      const bool isNone = facts.kind == FileFacts::Kind::kNone;
      library.state = isNone ? State::kMissing : isFolder ? State::kFolder : State::kNoFile;
      return;
    }
    library.isWritableByAll = facts.isWritableByAll;
    library.isFolderWritableByAll = m_isBinWritableByAll;
    library.isExecutable = facts.isExecutable;
    const auto [first, isFirst] = m_identities.emplace(facts.identity, one.id);
    if (!isFirst && !facts.identity.empty()) library.sameFileAs = first->second;
    LibraryFile* file = m_files.Open(path);
    if (file == nullptr) {
      library.state = State::kUnreadable;
      return;
    }
    const LibraryFile* program = m_files.Executable();
    library.state = StateOf(file->header, program, library.isProgram);
    const bool isElf = program != nullptr && program->header.format == LibraryHeader::Format::kElf;
    if (library.isProgram && isElf && IsScript(m_names.toPath(path))) library.state = State::kGood;
    library.machine = file->header.machine;
    if (file->header.IsLibraryFile()) library.format = FormatName(file->header.format);
    if (program != nullptr && program->header.IsLibraryFile()) {
      library.requiredFormat = FormatName(program->header.format);
      library.requiredMachine = program->header.machine;
    }
    if (library.state != State::kGood || library.isProgram) return;
    one.file = file;
    library.init = EntryIn(file->header, "Init");
    library.unInit = EntryIn(file->header, "UnInit");
    ReadOtherNames(file->header, library);
  }

  static PluginLibrary::Entry EntryIn(const LibraryHeader& header, std::string_view name) {
    const auto found =
        std::find_if(header.exported.begin(), header.exported.end(),
                     [&](const ExportedSymbol& symbol) { return symbol.name == name; });
    if (found == header.exported.end()) return PluginLibrary::Entry::kMissing;
    return found->isFunction ? PluginLibrary::Entry::kFunction : PluginLibrary::Entry::kNoFunction;
  }

  static void ReadOtherNames(const LibraryHeader& header, PluginLibrary& library) {
    for (const ExportedSymbol& symbol : header.exported) {
      if (IsMangled(symbol.name, "Init")) library.mangledInit = symbol.name;
      if (IsMangled(symbol.name, "UnInit")) library.mangledUnInit = symbol.name;
      const bool isShort = symbol.name.size() <= kShortName && !symbol.name.empty();
      const bool isEntry = symbol.name == "Init" || symbol.name == "UnInit";
      if (isShort && !isEntry && library.similarNames.size() < kMostSimilar) {
        library.similarNames.emplace_back(symbol.name);
      }
    }
  }

  /// ELF: an entry that the library lacks is looked up in those that it needs, in the order in
  /// which they are loaded.
  static void FindEntries(const std::deque<LoadedFile>& loaded, PluginLibrary& library) {
    for (const LoadedFile& one : loaded) {
      using Entry = PluginLibrary::Entry;
      if (library.init == Entry::kMissing) library.init = EntryIn(one.file->header, "Init");
      if (library.unInit == Entry::kMissing) library.unInit = EntryIn(one.file->header, "UnInit");
    }
  }

  /// The name of a file as findings have it.
  std::string Shown(const LibraryFile& file) const {
    const std::string folder = m_folder + "/";
    const bool isInside = file.path.compare(0, folder.size(), folder) == 0;
    return isInside ? file.path.substr(folder.size()) : file.path;
  }

  void AddNotFound(PluginFile& one, const std::deque<LoadedFile>& loaded) {
    for (const LoadedFile& user : loaded) {
      for (const FoundLibrary& found : user.needs) {
        if (found.state == NeededLibrary::State::kFound) continue;
        if (user.file != one.file && one.library->notFound.size() >= kMostOfOthers) return;
        one.library->notFound.push_back(NotFound(found, *user.file, *one.file));
      }
    }
  }

  NeededLibrary NotFound(const FoundLibrary& found, const LibraryFile& user,
                         const LibraryFile& plugin) {
    NeededLibrary needed;
    needed.name = found.name;
    needed.state = found.state;
    if (&user != &plugin) needed.neededBy = Shown(user);
    if (found.file != nullptr) needed.file = Shown(*found.file);
    if (found.file == nullptr) needed.otherCase = m_files.OtherCase(user.folder, found.name);
    return needed;
  }

  void AddImports(PluginFile& one, const LoadedFile& loaded) {
    const LibraryHeader& header = one.file->header;
    for (std::size_t i = 0; i < loaded.needs.size(); ++i) {
      LibraryFile* file = loaded.needs[i].file;
      const auto plugin = m_pluginOf.find(file);
      const bool isOther = plugin != m_pluginOf.end() && file != one.file;
      if (!isOther || loaded.needs[i].state != NeededLibrary::State::kFound) continue;
      PluginImport import;
      import.plugin = plugin->second;
      for (const UndefinedSymbol& symbol : header.undefined) {
        if (!m_files.IsGlobal(symbol.name) && file->Defines(symbol.name)) {
          import.symbols.emplace_back(symbol.name);
        }
      }
      for (const ImportedSymbol& symbol : header.imported) {
        if (symbol.library == i) import.symbols.push_back(NameOf(symbol));
      }
      one.library->imports.push_back(std::move(import));
    }
  }

  static std::string NameOf(const ImportedSymbol& symbol) {
    return symbol.name.empty() ? "number " + std::to_string(symbol.ordinal)
                               : std::string(symbol.name);
  }

  /// What nothing offers to the plugin's library, or to one that is loaded with it.
  void AddMissing(PluginFile& one, const std::deque<LoadedFile>& loaded) {
    std::vector<MissingSymbol>& missing = one.library->missing;
    for (const LoadedFile& user : loaded) {
      if (user.file != one.file && missing.size() >= kMostOfOthers) return;
      const std::string name = user.file == one.file ? std::string() : Shown(*user.file);
      for (const std::string_view symbol : NotGlobal(*user.file)) {
        const bool isOffered =
            std::any_of(loaded.begin(), loaded.end(),
                        [&](const LoadedFile& other) { return other.file->Defines(symbol); });
        if (!isOffered) missing.push_back({std::string(symbol), name, {}, false});
      }
      AddMissingVersions(user, name, missing);
      AddMissingImports(user, name, missing);
    }
  }

  /// The symbols that the file uses and that the program's libraries do not define.
  const std::vector<std::string_view>& NotGlobal(const LibraryFile& file) {
    const auto [known, isNew] = m_notGlobal.try_emplace(&file);
    if (isNew) {
      for (const UndefinedSymbol& symbol : file.header.undefined) {
        const bool mustBeFound = !symbol.isWeak && !m_files.IsGlobal(symbol.name);
        if (mustBeFound) known->second.push_back(symbol.name);
      }
    }
    return known->second;
  }

  void AddMissingVersions(const LoadedFile& user, const std::string& name,
                          std::vector<MissingSymbol>& missing) const {
    for (const RequiredVersion& required : user.file->header.requiredVersions) {
      const auto found =
          std::find_if(user.needs.begin(), user.needs.end(),
                       [&](const FoundLibrary& needed) { return needed.name == required.library; });
      if (found == user.needs.end() || found->file == nullptr) continue;
      const std::vector<std::string>& versions = found->file->header.versions;
      const bool isThere =
          std::find(versions.begin(), versions.end(), required.version) != versions.end();
      if (isThere || versions.empty()) continue;  // without any version the loader only warns
      missing.push_back({required.version, name, Shown(*found->file), true});
    }
  }

  void AddMissingImports(const LoadedFile& user, const std::string& name,
                         std::vector<MissingSymbol>& missing) {
    for (const ImportedSymbol& symbol : user.file->header.imported) {
      if (symbol.library >= user.needs.size()) continue;
      LibraryFile* file = user.needs[symbol.library].file;
      if (file == nullptr || !m_files.IsOwn(*file, user) || Exports(*file, symbol)) continue;
      missing.push_back({NameOf(symbol), name, Shown(*file), false});
    }
  }

  static bool Exports(LibraryFile& file, const ImportedSymbol& symbol) {
    if (!symbol.name.empty()) return file.Defines(symbol.name);
    return std::any_of(
        file.header.exported.begin(), file.header.exported.end(),
        [&](const ExportedSymbol& exported) { return exported.ordinal == symbol.ordinal; });
  }

  CheckedProduct& m_product;
  const LocalNames& m_names;
  const LibrarySystem& m_system;
  LibraryFiles m_files;
  std::string m_folder;  // of the product, without "/" at the end
  bool m_isBinWritableByAll = false;
  std::unordered_map<std::string, std::string> m_small;  // names on disk, by small letters
  std::vector<NamedFile> m_named;                        // that `m_read` is of
  std::vector<PluginFile> m_read;
  std::unordered_map<std::string, std::string> m_identities;  // the first ID of each file
  std::unordered_map<const LibraryFile*, std::string> m_pluginOf;
  std::unordered_map<const LibraryFile*, std::vector<std::string_view>> m_notGlobal;
};

PluginLibraryReader::PluginLibraryReader(CheckedProduct& product, const fs::path& productFolder,
                                         const LocalNames& names, const LibrarySystem& system)
    : m_reading(std::make_unique<Reading>(product, productFolder, names, system)) {}

PluginLibraryReader::~PluginLibraryReader() = default;

void PluginLibraryReader::Read() {
  m_reading->Read();
}
