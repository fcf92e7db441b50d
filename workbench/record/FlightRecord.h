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

/// One line, without its line feed. Bytes that are no UTF-8 become U+FFFD.
std::string RecordLine(const RunHead& head);
std::string RecordLine(const PluginHead& plugin);
std::string RecordLine(const RunEvent& event);

/// Writes a flight record, each line in one write that has left the process when the call returns.
///
/// Not thread-safe. A line that cannot be written (a full disk) is counted as lost; the next one
/// begins on a line of its own.
///
/// Every write goes to the file's end. So a crash handler may add its line through a handle of its
/// own, opened for appending while the process is well: no later line overwrites it.
class RecordWriter {
 public:
  /// Creates `file`, or empties it; its folder exists. Throws std::runtime_error with a sentence
  /// that names it.
  explicit RecordWriter(const std::filesystem::path& file);

  template <typename Part>
  void Write(const Part& part) {
    WriteLine(RecordLine(part));
  }
  /// `line`: one, or several with line feeds between them, which are written together.
  void WriteLine(const std::string& line);

  /// Any thread.
  std::size_t LostLines() const { return m_lost; }
  const std::filesystem::path& File() const { return m_file; }

 private:
  std::filesystem::path m_file;
  std::ofstream m_stream;
  std::atomic<std::size_t> m_lost{0};
  bool m_nextAfterFailure = false;  // the file may end in part of a line
};

/// A flight record as it was read.
struct FlightRecord {
  RunHead head;
  std::vector<PluginHead> plugins;
  std::vector<RunEvent> events;
  std::size_t unreadableLines = 0;  // cut off, or of a kind that this version does not know
};

/// Reads a record, to its last whole line; members that this version does not know are passed over.
/// Throws std::runtime_error with a sentence that names the file when it cannot be opened, has no
/// head, or is of a schema that this version does not know.
FlightRecord ReadFlightRecord(const std::filesystem::path& file);

/// Where the records of a product's runs lie when nobody says otherwise, a folder for each product:
/// `<state>/TevPluginFrame/runs/<name>-<hash of the path>/<UTC time>-<pid>.jsonl`.
///
/// Names hold only what every file system takes, so that they sort by their time. Other files in
/// the folder are left alone.
class RecordFolder {
 public:
  static constexpr std::size_t kKept = 20;

  /// `state`: the user's state folder. `product`: full path of the product's bin folder; the folder
  /// is named by the product's (the one above it) and by a hash of the path as it is written.
  RecordFolder(const std::filesystem::path& state, const std::filesystem::path& product);

  const std::filesystem::path& Path() const { return m_path; }

  /// Where a run that begins at `time` (as in RunHead) writes. Makes the folder; throws
  /// std::runtime_error with a sentence when it cannot.
  std::filesystem::path NewRecord(const std::string& time, std::int64_t pid) const;

  /// Removes the oldest records, so that kKept are left, and `spared` too, which may be the record
  /// of a run that goes on. One that cannot be removed stays.
  void Prune(const std::filesystem::path& spared) const;

 private:
  std::filesystem::path m_path;
};
