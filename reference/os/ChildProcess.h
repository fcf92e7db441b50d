#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What a child process is started with, beside this process's environment. Texts are in the local
/// code page.
struct ChildSettings {
  std::filesystem::path program;
  std::vector<std::string> arguments;  // without the program's name
  std::filesystem::path output;        // file for standard output, emptied first; empty: discarded
  std::filesystem::path errors;        // the same for standard error; may be the same file
};

/// How a process ended.
struct ChildEnd {
  bool crashed = false;   // by a signal, on Windows with an exception's code
  std::int64_t code = 0;  // the signal or the exception's code; else the exit status

  bool operator==(const ChildEnd& other) const;
};

/// A program that this process has started, with an empty standard input.
///
/// It is in a process group of its own: Ctrl-C in the terminal reaches only this process, which
/// decides what becomes of the child. The destructor kills a child that still runs, and waits for
/// its end. What the child itself has started is not ended. Thread-safe.
class ChildProcess {
 public:
  /// Starts the program. Throws std::system_error that names the file that cannot be opened or run.
  explicit ChildProcess(const ChildSettings& settings);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Waits for the child's end, at most for `limit`. Empty when it still runs then.
  std::optional<ChildEnd> WaitFor(std::chrono::milliseconds limit);

  /// Asks the child to stop: SIGTERM, on Windows Ctrl-Break, which only a child on this process's
  /// console receives. False when it has ended or cannot be asked.
  bool RequestStop() noexcept;

  /// Ends the child without its own doing. WaitFor then returns soon.
  void Kill() noexcept;

  /// The system's number of the child.
  std::uint64_t Id() const;

 private:
  struct System;
  std::unique_ptr<System> m_system;
};
