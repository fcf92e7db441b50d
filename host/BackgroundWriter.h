#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

/// Writes texts on its own thread, so that a reader that has stopped reading delays neither the
/// plugins nor a stop request.
///
/// Created once, at the start of main, and never destroyed: its thread may be blocked in a write
/// while the process ends. Thread-safe. Call Flush before the process ends.
class BackgroundWriter {
 public:
  /// Writes `text`. Returns why it failed; empty on success.
  using WriteFn = std::function<std::string(const std::string& text)>;

  /// `thread`: the thread's name.
  BackgroundWriter(const char* thread, WriteFn write);
  ~BackgroundWriter() = delete;
  BackgroundWriter(const BackgroundWriter&) = delete;
  BackgroundWriter& operator=(const BackgroundWriter&) = delete;

  /// Texts are written in the order of the calls. After a failed write later texts are dropped.
  void Write(const std::string& text);

  /// Waits until everything is written, at most for `limit`. After that the writer has failed.
  void Flush(std::chrono::milliseconds limit);

  /// Whether a text still waits because an earlier write has not finished.
  bool IsBehind() const;

  /// Why a write failed; empty when none has.
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
