#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// The double of the product's log: keeps every line.

/// One log call, taken apart.
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

  /// Whether `function` has logged `count` lines and logs no more for a moment: a thread that does
  /// not wait would log the next line within it.
  bool StaysAt(const std::string& function, std::size_t count) const;
  std::vector<LogLine> Lines() const;

  /// Every line as "LEVEL FUNCTION: TEXT", functions without their namespaces and classes.
  std::vector<std::string> Brief() const;

  /// Those of one function.
  std::vector<std::string> Brief(const std::string& function) const;

  /// Those of one level or above.
  std::vector<std::string> BriefFrom(int level) const;

  /// What is wrong with the lines' frame fields: module, qualified function, source file; empty
  /// when every line is as it has to be.
  std::string Faults() const;
};
