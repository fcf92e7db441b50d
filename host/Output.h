#pragma once

#include <chrono>
#include <string>

#include "host/BackgroundWriter.h"
#include "reference/os/Terminal.h"

/// HUB's standard output, to which only HUB writes, and its standard error; each is written on its
/// own thread. Created once, at the start of main, and never destroyed. Thread-safe.
class Output {
 public:
  /// Takes over standard output; see OwnOutput.
  Output();
  ~Output() = delete;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Writes to standard output.
  void Write(const std::string& text) { m_writer.Write(text); }

  /// Writes "HUB: " and the sentence to standard error. When that is the terminal of standard
  /// output, the text is wrapped to its width and written in order with the other output.
  void WriteError(const std::string& sentence);

  /// Waits until everything is written, five seconds at most for each stream. What is not written
  /// by then is lost.
  void Flush();

  /// Whether standard output still waits for its reader.
  bool IsBehind() const { return m_writer.IsBehind(); }

  /// Why a write to standard output failed; empty when none has.
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
