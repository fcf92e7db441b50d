#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// A double of the base library's log that stores every line.

/// One log call and the parts of its text.
struct LogLine {
  int level = 0;
  std::string module;
  std::string function;  // from the text's first field
  std::string text;      // between the first field and the last
  std::string file;      // from the last field
  int line = 0;
  std::string whole;  // as formatted
};

class Log {
 public:
  static Log& Instance();

  /// Forgets all lines, and what was to be done at one.
  void Clear();

  /// Calls `action` once, after the next line that Brief shows as `line`, on the thread that logs
  /// it. The locks that the thread holds are held meanwhile.
  void AtLine(const std::string& line, std::function<void()> action);

  /// Waits until `function` has logged `count` lines. False when `limit` passes first.
  bool Await(const std::string& function, std::size_t count,
             std::chrono::milliseconds limit = std::chrono::seconds(30)) const;

  /// Whether `function` has logged `count` lines, and no more for 50 ms. True does not prove that
  /// its thread waits: on a busy machine one that does not may log its next line only later.
  bool StaysAt(const std::string& function, std::size_t count) const;
  std::vector<LogLine> Lines() const;

  /// Adds a call of the libraries around the frame to the course.
  void AddCall(const std::string& call);

  /// The lines, as Brief shows them, and the calls, in the order in which they came.
  std::vector<std::string> Course() const;

  /// Every line as "LEVEL FUNCTION: TEXT", with functions without namespace and class.
  std::vector<std::string> Brief() const;

  /// The lines of one function, in the same form.
  std::vector<std::string> Brief(const std::string& function) const;

  /// The lines of `level` or above, in the same form.
  std::vector<std::string> BriefFrom(int level) const;

  /// The lines whose module, qualified function or source file is wrong; empty when there are
  /// none.
  std::string Faults() const;
};
