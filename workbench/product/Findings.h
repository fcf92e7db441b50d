#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "src/model/ProductModel.h"
#include "workbench/output/Severity.h"
#include "workbench/product/LocalNames.h"
#include "workbench/product/ModelFiles.h"

/// A problem of a product, or a note on it, as one sentence for the user.
struct Finding {
  Severity severity;
  std::string text;
};

/// What prevents plugins of a readable product from ever starting, or its stop from ending:
/// dependency cycles, plugins that depend on themselves, sub platforms without an ID. `model` is
/// the one that the frame handed over; files are read only when there is something to report.
std::vector<Finding> FindingsBeforeStart(const std::filesystem::path& bin,
                                         const ProductModel& model, const LocalNames& names);

/// What is lost because of faulty model files that do not make Frame_Init fail: files that read as
/// empty, and addons and tools whose files or plugin descriptions cannot be read.
std::vector<Finding> FindingsOfFiles(const std::vector<ModelFile>& files, const LocalNames& names);
