#pragma once

#include <string>
#include <utility>
#include <vector>

/// A library that a plugin's library needs, or one that such a library needs.
struct NeededLibrary {
  enum class State {
    kFound,
    kUnusable,      // the loader takes `file`, which is no library
    kBeside,        // `file` lies beside the library that needs it, where the loader does not look
    kOtherMachine,  // `file` is for another machine, and the loader finds no other one
    kNowhere
  };

  std::string name;      // as it is needed
  std::string neededBy;  // the file that needs it; empty: the plugin's own library
  State state = State::kFound;
  std::string file;       // relative to the product's folder, or a whole path outside of it
  std::string otherCase;  // a file beside it whose name has other letter case
};

/// A name, or the version of a library, that none of the libraries has.
struct MissingSymbol {
  std::string name;
  std::string user;     // the file that uses it; empty: the plugin's own library
  std::string library;  // that should have it; empty: any
  bool isVersion = false;
};

/// What a library uses of another plugin's library.
struct PluginImport {
  std::string plugin;
  std::vector<std::string> symbols;  // may be empty: it is mapped all the same
};

/// The library or program of a plugin, read without loading it. Plain value.
struct PluginLibrary {
  enum class State {
    kGood,
    kMissing,
    kFolder,
    kNoFile,      // a pipe or device
    kUnreadable,  // permission
    kEmpty,
    kNoLibrary,     // neither ELF nor PE
    kOtherFormat,   // PE where the system needs ELF, or the other way round
    kOtherMachine,  // for another processor
    kDamaged,       // cut short or damaged
    kOtherKind      // a program or an object file where a library belongs, or the other way round
  };

  enum class Entry { kMissing, kFunction, kNoFunction };

  std::string name;        // "bin/storage.server.dll"
  bool isProgram = false;  // of an executable plugin: "bin/media.recorder.exe", by its entry's ID
  State state = State::kGood;
  std::string otherCase;         // the name that it has on disk; empty when that is `name`
  std::string format;            // "ELF"
  std::string machine;           // "x86-64"
  std::string requiredFormat;    // that this system runs; empty when that is not known
  std::string requiredMachine;   // the same
  bool isWritableByAll = false;  // never where the system has no such permission
  bool isFolderWritableByAll = false;
  bool isExecutable = true;  // of a program: has the permission, where there is one
  std::string sameFileAs;    // the first plugin that has the same file; empty for none

  // Of a good library. An ELF library's entries may be in a library that it needs.
  Entry init = Entry::kMissing;
  Entry unInit = Entry::kMissing;
  std::string mangledInit;  // a name of a C++ function Init that is exported
  std::string mangledUnInit;
  std::vector<std::string> similarNames;  // short exported names, for suggestions
  std::vector<NeededLibrary> notFound;    // those that are not kFound
  std::vector<MissingSymbol> missing;     // only when every needed library was read
  std::vector<PluginImport> imports;      // from other plugins' libraries, in the file's order
};
