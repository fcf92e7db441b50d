#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/PluginLives.h"

/// Shows on standard output what becomes of the plugins, while it happens.
///
/// One line for each start and stop; and the plugins that are being waited for: on a terminal in a
/// last line that is drawn anew, elsewhere as a line once a second. One thread's own.
class ProgressPrinter {
 public:
  explicit ProgressPrinter(const PluginLives& lives);

  /// Prints what has happened since the last call. To be called several times a second.
  void Update();

  /// Prints what is left, and takes the last line away.
  void Finish();

  /// Prints a line of the caller's between the others.
  void Say(const std::string& line);

 private:
  void PrintEvents(const std::vector<PluginLife>& lives);
  void ClearWaitingLine();

  const PluginLives& m_lives;
  const bool m_onTerminal;
  std::vector<PluginLife::Phase> m_shown;  // by position: the last phase that was printed
  std::chrono::steady_clock::time_point m_lastWaitingLine;
  bool m_waitingLineStands = false;
};
