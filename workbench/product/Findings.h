#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "src/model/ProductModel.h"
#include "workbench/product/LocalNames.h"
#include "workbench/product/ModelFiles.h"

/// One sentence about a product that people should read.
struct Finding {
  enum class Severity {
    kNote,     // worth knowing
    kWarning,  // something is lost, but no plugin
    kError     // a plugin is lost or never starts, or a model file reads as empty
  };

  Severity severity;
  std::string text;
};

/// A cycle as "a → b → a"; of a long one, the first members and how many more there are.
std::string CycleText(const std::vector<std::string>& cycle);

/// What keeps a product that could be read from starting or stopping as a whole: dependency cycles,
/// plugins that depend on themselves, sub platforms without an ID. `model` is the one that the
/// frame handed over; the files are read only when there is something to say.
std::vector<Finding> FindingsBeforeStart(const std::filesystem::path& bin,
                                         const ProductModel& model, const LocalNames& names);

/// What is lost because of model files with which the frame starts all the same: files that read
/// as empty, and addons and tools whose own files, or whose plugins' descriptions, cannot be read.
std::vector<Finding> FindingsOfFiles(const std::vector<ModelFile>& files, const LocalNames& names);
