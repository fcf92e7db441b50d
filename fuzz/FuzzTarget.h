#pragma once

#include <filesystem>
#include <string>

#include "host/RecordJson.h"

/// What one target does with one input. Anything but a plain return is a finding: a crash, a leak,
/// an exception, or Check with false.
void Fuzz(const std::string& input);

/// Ends the process with `promise` on standard error when it is broken.
void Check(bool kept, const char* promise);

/// The folder in memory in which this process lays its files out; the running executable is said to
/// lie in its "bin/".
class FuzzFolder {
 public:
  static FuzzFolder& Instance();

  /// Writes `content` to the file `name`, a relative path, and returns its full path.
  std::string Write(const std::string& name, const std::string& content) const;

  /// Takes the files of earlier inputs away.
  void Clear() const;

  std::string Path(const std::string& name) const { return (m_root / name).generic_string(); }

 private:
  FuzzFolder();
  ~FuzzFolder();

  std::filesystem::path m_root;
};

/// Reads twice with `read`, a function from a fresh `Record` to nothing: nothing may be left over
/// from the first time, or stay unset.
template <typename Record, typename Read>
void ReadTwice(Read read) {
  Record first{};
  read(first);
  Record second{};
  read(second);
  Check(Json(first) == Json(second), "the same file reads the same twice");
}
