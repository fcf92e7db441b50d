#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

/// Writes texts on a thread of its own: a reader that has stopped reading must hold up neither the
/// plugins nor a stop request.
///
/// Made once, at the begin of main, and never destroyed: its thread may hang in a write while the
/// process ends. Any thread may write. To be flushed before the process ends.
class BackgroundWriter {
 public:
  /// Writes a text; why it could not, empty when it could.
  using WriteFn = std::function<std::string(const std::string& text)>;

  /// `thread`: the thread's name.
  BackgroundWriter(const char* thread, WriteFn write);
  ~BackgroundWriter() = delete;
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  /// Texts are written in the order of the calls. After a failure nothing more is tried.
  void Write(const std::string& text);

  /// Waits until everything is written, at most so long. What is not written then counts as failed.
  void Flush(std::chrono::milliseconds limit);

  /// Whether what was written before still waits for the reader.
  bool IsBehind() const;

  /// Why something could not be written; empty: nothing of the kind.
  std::string Error() const;

 private:
  void Run(const char* thread);

  const WriteFn m_write;

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  std::string m_waiting;
  std::string m_error;
  bool m_writing = false;
};
