#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "workbench/product/LocalNames.h"

// The model files of a product on disk, found and parsed by the same rules as in the frame.

/// One element of a list in a model file; most of them name another model file.
struct ModelFileEntry {
  std::filesystem::path file;  // that contains the list; empty for a file that no list names
  int line = 0;                // of the element, or of the section that hides it
  std::string element;         // its name: Plugin, Driver, Addon, Tool
  std::string id;              // as the frame reads it; may be empty

  /// The frame counts this entry but does not find it, because the list is split into several
  /// sections and XPath positions start again in each. `line` is then the second section's.
  bool hidden = false;
};

/// One model file, and whether the frame can read it.
struct ModelFile {
  enum class State {
    kGood,
    kMissing,        // and the .data file cannot be read either
    kUnreadable,     // a folder, empty, without permission...; nor can the .data file be read
    kNotWellFormed,  // reads as empty
    kOtherRoot,      // reads as empty: another root element, or one in a namespace
    kOtherID         // description of an addon or tool with another ID: it is skipped
  };

  std::filesystem::path
      path;  // as the frame names it, without "..": a folder that is a symbolic
             // link is replaced by its target where ".." means the target's parent
  std::filesystem::path read;  // `path` or the .data file beside it; empty when neither is readable
  State state = State::kGood;
  std::string detail;      // for a state other than kGood, one clause: "is a directory"
  std::string passedOver;  // when `read` is the .data file: why `path` is not read, "is empty"
  int line = 0;            // of the XML error, or of the root element; 0 when there is none
  bool required = false;   // Frame_Init fails when it is missing or unreadable
  std::string root;        // the name that its root element must have
  ModelFileEntry listed;   // the entry that names the file
  std::string heldID;      // the ID inside a plugin's description, when state is kGood
};

/// Every model file that the frame reads for the product whose executables lie in `bin`, in the
/// order in which they are first read, each once; every entry without an ID has its own record.
///
/// Lists are followed even where the frame would stop because a required file is missing. They are
/// not followed where the frame skips them: installed addons without a catalogue or without a
/// product version of three parts, installed tools without a catalogue.
/// Throws only std::bad_alloc.
std::vector<ModelFile> ReadModelFiles(const std::filesystem::path& bin, const LocalNames& names);

/// Why Frame_Init could not read the product: one sentence for each required file that cannot be
/// read, and for each entry that names no file because it has no ID. Empty when all can be read.
std::vector<std::string> UnreadableProductSentences(const std::vector<ModelFile>& files,
                                                    const LocalNames& names);

/// A place in a file.
struct FileLine {
  std::filesystem::path file;
  int line = 0;
};

/// Where the dependencies that order the start are declared: the first place of each, by the pair
/// (ID of the plugin, ID that it depends on), with the IDs of the descriptions.
using DependencyLines = std::map<std::pair<std::string, std::string>, FileLine>;
DependencyLines ReadDependencyLines(const std::vector<ModelFile>& files);

/// The sub platforms that Product.xml lists without an ID.
std::vector<ModelFileEntry> SubPlatformsWithoutID(const std::vector<ModelFile>& files);

/// The sentence on an entry without an ID: `PATH:9: a <Plugin> without an ID`.
std::string EntryWithoutID(const ModelFileEntry& listed, const LocalNames& names);
