#pragma once

#include <filesystem>
#include <string>

// Reads the text of a model file by the same rule as the frame.

/// The text of a file, or of the .data file beside it.
struct ModelText {
  std::filesystem::path read;  // empty when neither can be read
  std::string text;            // without trailing line feeds
  bool missing = false;        // the file itself does not exist
  std::string problem;         // why the file itself cannot be read: "is empty"; empty when it can
  std::string standIn;         // the name of the .data file
  std::string standInProblem;  // why that cannot be read either
  bool isPipe = false;         // one of the two is a pipe, at which the frame waits for a writer
};

/// Reads the file that the frame names `local`, a name in the local code page, or the .data file
/// beside it when that is missing, empty or unreadable.
ModelText ReadModelText(const std::string& local,
                        std::filesystem::path (*toPath)(const std::string& local));
