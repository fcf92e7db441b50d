#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "workbench/product/LocalNames.h"

// The model files of a product on disk, found and parsed by the frame's own rules.

/// One element of a list, mostly of one that leads the frame to another file.
struct ModelFileEntry {
  std::filesystem::path file;  // the one really read; empty for a file that is always read
  int line = 0;                // of the element, or of the section that hides it
  std::string element;         // its name: Plugin, Driver, Addon, Tool
  std::string id;              // as the frame reads it; may be empty

  /// The frame counted this entry but does not find it: the list is spread over several sections,
  /// and a position counts inside each. `line` is then that of the second section.
  bool hidden = false;
};

/// One model file, and whether the frame can read it.
struct ModelFile {
  enum class State {
    kGood,
    kMissing,        // and no stand-in can be read
    kUnreadable,     // a folder, empty, without permission...; and no stand-in can be read
    kNotWellFormed,  // reads as empty
    kOtherRoot,      // well-formed, and reads as empty: another root, or one in a namespace
    kOtherID         // an addon or tool whose description holds another ID: it is skipped
  };

  std::filesystem::path
      path;  // as the frame names it, without "..": a folder that is a symbolic
             // link is replaced by its target where ".." means the target's parent
  std::filesystem::path read;  // `path`, or the .data file that stands in; empty when neither can
  State state = State::kGood;
  std::string detail;      // for a state that is not good, one clause: "is a directory"
  std::string passedOver;  // when `read` is the stand-in, why `path` is not read: "is empty"
  int line = 0;            // of what is not well-formed, or of the root; 0 where there is none
  bool required = false;   // Frame_Init fails when it is missing or unreadable
  std::string root;        // the root element that it has to have
  ModelFileEntry listed;
  std::string heldID;  // of a good description of a plugin: the ID that it holds itself
};

/// Every model file that the frame reads for the product whose executables lie in `bin`, in the
/// order of first reading, each once (but entries without an ID each stand for themselves).
///
/// Lists are followed though the frame stops before them at a required file that is missing. They
/// are not followed where the frame goes on without them: installed addons without a catalogue or
/// without a product version of three parts, installed tools without a catalogue.
/// Throws std::bad_alloc alone.
std::vector<ModelFile> ReadModelFiles(const std::filesystem::path& bin, const LocalNames& names);

/// Why Frame_Init could not read the product: one sentence for each required file that cannot be
/// read, and for each entry without an ID that leads to none. Empty when all can be read.
std::vector<std::string> UnreadableProductSentences(const std::vector<ModelFile>& files,
                                                    const LocalNames& names);

/// A place in a file.
struct FileLine {
  std::filesystem::path file;
  int line = 0;
};

/// Where dependencies that order the start are declared, by (ID of the plugin, ID that it depends
/// on): the first place of each, IDs as in the descriptions.
using DependencyLines = std::map<std::pair<std::string, std::string>, FileLine>;
DependencyLines ReadDependencyLines(const std::vector<ModelFile>& files);

/// The sub platforms that Product.xml lists without an ID.
std::vector<ModelFileEntry> SubPlatformsWithoutID(const std::vector<ModelFile>& files);

/// `PATH:9: a <Plugin> without an ID`: what is wrong with an entry that has none.
std::string EntryWithoutID(const ModelFileEntry& listed, const LocalNames& names);
