#pragma once

#include <filesystem>
#include <string>

// The bytes of a model file, taken by the frame's rule.

/// One file, or the one that stands in for it.
struct ModelText {
  std::filesystem::path read;  // empty when neither can be read
  std::string text;            // without trailing line feeds
  bool missing = false;        // the file itself does not exist
  std::string problem;         // why the file itself is not read: "is empty"; empty when it is
  std::string standIn;         // the name of the file that may stand in
  std::string standInProblem;  // why that is not read either
};

/// Reads the file that the frame names `local`, a name in the local code page, or the .data file
/// beside it when that is missing, empty or unreadable.
ModelText ReadModelText(const std::string& local,
                        std::filesystem::path (*toPath)(const std::string& local));

/// The bytes of a file that could be read before; empty when it no longer can.
std::string ReadTextAgain(const std::filesystem::path& file);
