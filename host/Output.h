#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

#include "reference/os/Terminal.h"

/// HUB's standard output, written on a thread of its own: a reader that has stopped reading must
/// hold up neither the plugins nor a stop request.
///
/// Made once, at the begin of main, and never destroyed: its thread may hang in a write while the
/// process ends. Any thread may write. To be flushed before the process ends.
class Output {
 public:
  /// Takes standard output; see OwnOutput.
  Output();
  ~Output() = delete;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Texts are written in the order of the calls.
  void Write(const std::string& text);

  /// Waits until everything is written, at most so long. What is not written then counts as failed,
  /// and nothing more is tried.
  void Flush(std::chrono::milliseconds limit);

  /// Why something could not be written; empty: nothing of the kind.
  std::string Error() const;

  bool IsTerminal() const { return m_output.IsTerminal(); }
  int Columns() const { return m_output.Columns(); }

 private:
  void Run();

  OwnOutput m_output;

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::string m_waiting;
  std::string m_error;
  bool m_writing = false;
};
