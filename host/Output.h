#pragma once

#include <chrono>
#include <string>

#include "host/BackgroundWriter.h"
#include "reference/os/Terminal.h"

/// HUB's two streams, each written in the background: standard output, which nobody else writes to,
/// and standard error. Made once, at the begin of main, and never destroyed. Any thread.
class Output {
 public:
  /// Takes standard output; see OwnOutput.
  Output();
  ~Output() = delete;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Writes to standard output.
  void Write(const std::string& text) { m_writer.Write(text); }

  /// Writes to standard error "HUB: " and the sentence: as a line, or on the terminal of standard
  /// output as lines of its width, in order with what that shows.
  void WriteError(const std::string& sentence);

  /// Waits until everything is written, for a few seconds at most. What is not written then is
  /// lost.
  void Flush();

  /// Whether standard output still waits for its reader.
  bool IsBehind() const { return m_writer.IsBehind(); }

  /// Why something could not be written to standard output; empty: nothing of the kind.
  std::string Error() const { return m_writer.Error(); }

  /// Standard output itself, for a crash report.
  SystemFile File() const { return m_output.File(); }

  bool IsTerminal() const { return m_output.IsTerminal(); }
  int Columns() const { return m_output.Columns(); }

 private:
  OwnOutput m_output;
  BackgroundWriter& m_writer;
  BackgroundWriter& m_errors;
};
