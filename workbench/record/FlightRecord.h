#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "workbench/record/RunEvent.h"

// The flight record: one JSON object a line, described in docs/record.md.

/// One line, without its line feed. Bytes that are not valid UTF-8 become U+FFFD.
std::string RecordLine(const RunHead& head);
std::string RecordLine(const PluginHead& plugin);
std::string RecordLine(const RunEvent& event);

/// Writes a flight record without a buffer: each line is written by one system call before the call
/// returns.
///
/// Not thread-safe. A line that cannot be written (a full disk) is counted as lost; the next one
/// starts on a new line of the file.
///
/// Every write goes to the file's end. A crash handler can therefore append its line through
/// another handle, opened for appending before the crash; later lines do not overwrite it.
class RecordWriter {
 public:
  /// Creates `file`, or empties it; its folder must exist. Throws std::runtime_error with a
  /// sentence that names the file.
  explicit RecordWriter(const std::filesystem::path& file);

  template <typename Part>
  void Write(const Part& part) {
    WriteLine(RecordLine(part));
  }
  /// `line`: one line, or several with line feeds between them, which are written together.
  void WriteLine(const std::string& line);

  /// Thread-safe.
  std::size_t LostLines() const { return m_lost; }
  const std::filesystem::path& File() const { return m_file; }

 private:
  std::filesystem::path m_file;
  std::ofstream m_stream;
  std::atomic<std::size_t> m_lost{0};
  bool m_nextAfterFailure = false;  // the file may end in part of a line
};

/// The content of a flight record.
struct FlightRecord {
  RunHead head;
  std::vector<PluginHead> plugins;
  std::vector<RunEvent> events;
  std::size_t unreadableLines = 0;  // truncated, or of a kind that this version does not know
};

/// Reads a record; members that this version does not know are ignored, unreadable lines counted.
/// Throws std::runtime_error with a sentence that names the file when it cannot be opened, has no
/// head, or is of a schema that this version does not know.
FlightRecord ReadFlightRecord(const std::filesystem::path& file);

/// The default folder of a product's records, one for each product:
/// `<state>/TevPluginFrame/runs/<name>-<hash of the path>/<UTC time>-<pid>.jsonl`.
///
/// Names contain only characters that every file system allows, and sort by time. Other files in
/// the folder are not touched.
class RecordFolder {
 public:
  static constexpr std::size_t kKept = 20;

  /// `state`: the user's state folder. `product`: full path of the product's bin folder. The
  /// records' folder is named after the folder that contains it and a hash of the path's text.
  RecordFolder(const std::filesystem::path& state, const std::filesystem::path& product);

  const std::filesystem::path& Path() const { return m_path; }

  /// The path of the record of a run that begins at `time` (as in RunHead). Creates the folder;
  /// throws std::runtime_error with a sentence when that fails.
  std::filesystem::path NewRecord(const std::string& time, std::int64_t pid) const;

  /// The record of the run that began last; none when there is no record.
  std::optional<std::filesystem::path> Newest() const;

  /// Removes all records but the newest kKept and `spared`, which may be the record of a run that
  /// is still running. A record that cannot be removed stays.
  void Prune(const std::filesystem::path& spared) const;

 private:
  std::filesystem::path m_path;
};

/// The record of the run that began last, of whichever product has its records in the user's state
/// folder; none when there is no record.
std::optional<std::filesystem::path> NewestRecord(const std::filesystem::path& state);
