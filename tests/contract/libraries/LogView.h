#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// What the libraries under test show of their log while the object exists.
class LogView {
 public:
  LogView();
  ~LogView();
  LogView(const LogView&) = delete;
  LogView& operator=(const LogView&) = delete;

  /// As Subject::LoggedLines.
  std::optional<std::vector<std::string>> Lines();

 private:
  std::mutex m_mutex;
  std::vector<std::string> m_lines;  // guarded by m_mutex
};
