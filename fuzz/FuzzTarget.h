#pragma once

#include <filesystem>
#include <string>

#include "host/RecordJson.h"

/// Processes one input; each target defines it. A crash, a leak, an exception or a failed Check is
/// a finding.
void Fuzz(const std::string& input);

/// Ends the process with `promise` on standard error when `kept` is false.
void Check(bool kept, const char* promise);

/// The folder, in memory if possible, for the files of this process. The runtime reports the
/// executable as lying in its "bin/".
class FuzzFolder {
 public:
  static FuzzFolder& Instance();

  /// Writes `content` to the file `name`, a relative path, and returns its full path.
  std::string Write(const std::string& name, const std::string& content) const;

  /// Removes the files of earlier inputs.
  void Clear() const;

  std::string Path(const std::string& name) const { return (m_root / name).generic_string(); }

 private:
  FuzzFolder();
  ~FuzzFolder();

  std::filesystem::path m_root;
};

/// Calls `read` with two new `Record`s and checks that both are equal: the second must contain
/// nothing left over from the first, and no uninitialised value.
template <typename Record, typename Read>
void ReadTwice(Read read) {
  Record first{};
  read(first);
  Record second{};
  read(second);
  Check(Json(first) == Json(second), "the same file reads the same twice");
}
