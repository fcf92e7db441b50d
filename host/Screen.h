#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "host/Output.h"
#include "workbench/record/RunState.h"

/// Whether output is coloured: kAuto, on a terminal unless NO_COLOR is set.
bool WantsColor(Color color, bool onTerminal);

/// Shows the progress of the plugins on standard output.
///
/// Prints one line for each start and stop, and the plugins that the run waits for: on a terminal
/// as a last line that is overwritten, otherwise as a new line once a second. On a terminal that
/// last line is cut to the terminal's width, all others are wrapped. Not thread-safe.
class Screen {
 public:
  Screen(Output& output, Color color);

  bool Colored() const { return m_colored; }
  /// The terminal's width; 0 when standard output is no terminal.
  std::size_t Columns() const;

  /// Prints the starts and stops since the last call, and `waiting`, which names the plugins waited
  /// for (empty: none). Call it several times a second.
  void Update(const RunState& state, const std::string& waiting);

  /// Prints the starts and stops since the last call, and clears the line of the plugins waited
  /// for.
  void Finish(const RunState& state);

  void PrintLine(const std::string& line);

 private:
  void PrintEvents(const RunState& state);
  std::string EventLine(const PluginRun& plugin, const std::string& text) const;
  void ClearWaitingLine();

  Output& m_output;
  const bool m_onTerminal;
  const bool m_colored;
  std::vector<PluginRun::State> m_shown;  // by position: the last state that was printed
  std::chrono::steady_clock::time_point m_lastWaitingLine;
  bool m_waitingLineStands = false;
};
