#pragma once

#include <mutex>
#include <string>
#include <vector>

/// Finds in the frame's own log why it could not read the product. Fed from any thread.
class FailureReason {
 public:
  /// Takes one log line.
  void OnLogLine(int level, const std::string& module, const std::string& text);

  /// One sentence that names the file that stopped the frame and what is wrong with it, or, where
  /// no file did, the frame's own words.
  std::string Sentence() const;

 private:
  mutable std::mutex m_mutex;

  // Guarded by m_mutex.
  std::vector<std::string> m_unreadable;  // model files that the product cannot do without
  std::string m_lastFatal;
};
