#pragma once

#include <memory>
#include <string>
#include <vector>

/// The lines that the log under test has received since the object was made.
class LogView {
 public:
  static std::unique_ptr<LogView> Make();

  LogView() = default;
  virtual ~LogView() = default;
  LogView(const LogView&) = delete;
  LogView& operator=(const LogView&) = delete;

  /// As "LEVEL MODULE TEXT".
  virtual std::vector<std::string> Lines() = 0;
};
