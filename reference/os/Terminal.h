#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "reference/os/SystemFile.h"

/// The process's standard output, reserved for the program itself: what plugins write to standard
/// output goes to standard error instead.
///
/// Created once, as the first thing in main, and kept until the process ends. From then on
/// descriptor 1 refers to the same file as descriptor 2; child processes inherit only that.
/// Descriptors 0, 1 and 2 are then all open, on the null device if they were closed, so that no
/// file opened later gets one of these numbers. On Windows this applies to the C runtime's
/// descriptors and to the system's standard handles. Thread-safe.
class OwnOutput {
 public:
  /// Throws std::system_error when a descriptor cannot be opened or duplicated.
  OwnOutput();
  ~OwnOutput();
  OwnOutput(const OwnOutput&) = delete;
  OwnOutput& operator=(const OwnOutput&) = delete;

  /// Writes all of `text`, in UTF-8; texts of concurrent calls are not mixed. False when it cannot
  /// be written (output closed, reader gone, disk full); after that, later calls write nothing and
  /// return false.
  bool Write(std::string_view text);

  /// The system's reason why Write has returned false; constant after that. Empty before, and may
  /// then be read only while no Write is running.
  const std::string& Error() const { return m_error; }

  /// Whether it is a terminal that supports cursor sequences; on Windows they have been enabled.
  bool IsTerminal() const { return m_isTerminal; }

  /// Whether it is a terminal and standard error is the same terminal.
  bool IsTerminalOfErrors() const { return m_isTerminalOfErrors; }

  /// The terminal's current width in columns; 80 when unknown.
  int Columns() const;

  /// The file itself, for the report of a crash; kNoFile when standard output was closed.
  SystemFile File() const { return m_file; }

 private:
  void Fail(int code);

  // Written by the constructor, constant afterwards.
  SystemFile m_file = kNoFile;
  bool m_isTerminal = false;
  bool m_isTerminalOfErrors = false;

  std::mutex m_mutex;  // also held while a text is written, so that texts are not mixed

  // Guarded by m_mutex; constant once m_failed is true.
  bool m_failed = false;
  std::string m_error;
};
