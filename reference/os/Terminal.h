#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "reference/os/SystemFile.h"

/// The process's standard output, kept for the program itself: what plugins print to theirs goes to
/// standard error instead.
///
/// Created once, as the first thing in main, and kept until the process ends. From then on
/// descriptor 1 leads to where descriptor 2 leads; child processes inherit only that. Descriptors
/// 0, 1 and 2 are all open afterwards, on the null device where they were closed, so that no file
/// opened later becomes somebody's standard output. On Windows the same holds for the C runtime's
/// descriptors and the system's standard handles. Any thread.
class OwnOutput {
 public:
  /// Throws std::system_error when the system has no descriptor left.
  OwnOutput();
  ~OwnOutput();
  OwnOutput(const OwnOutput&) = delete;
  OwnOutput& operator=(const OwnOutput&) = delete;

  /// Writes all of `text`, in UTF-8; the texts of concurrent calls do not mix. False when it cannot
  /// be written (output closed, reader gone, disk full); from then on always false, and nothing is
  /// written any more.
  bool Write(std::string_view text);

  /// Why Write returned false, in the system's words. To be read after that; constant then.
  const std::string& Error() const { return m_error; }

  /// Is it a terminal that understands cursor sequences? On Windows they have been turned on.
  bool IsTerminal() const { return m_isTerminal; }

  /// Is it a terminal, and standard error the same one?
  bool IsTerminalOfErrors() const { return m_isTerminalOfErrors; }

  /// The terminal's present width in columns; 80 when unknown.
  int Columns() const;

  /// The file itself, for the report of a crash; kNoFile when standard output was closed.
  SystemFile File() const { return m_file; }

 private:
  void Fail(int code);

  // Written by the constructor, constant afterwards.
  SystemFile m_file = kNoFile;
  bool m_isTerminal = false;
  bool m_isTerminalOfErrors = false;

  std::mutex m_mutex;  // also keeps texts together

  // Guarded by m_mutex; constant once m_failed is true.
  bool m_failed = false;
  std::string m_error;
};
