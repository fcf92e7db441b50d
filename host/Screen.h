#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "host/Output.h"
#include "workbench/record/RunState.h"

/// Shows on HUB's own output what becomes of the plugins, while it happens.
///
/// One line for each start and stop; and the plugins that are waited for: on a terminal in a last
/// line that is drawn again and again, elsewhere as a line once a second. On a terminal nothing is
/// wider than it: that last line is cut, all others are wrapped. Not thread-safe.
class Screen {
 public:
  Screen(Output& output, Color color);

  bool Colored() const { return m_colored; }
  /// Columns of the terminal; 0 when it is none.
  std::size_t Columns() const;

  /// Prints what has happened since the last call, and `waiting` (empty: nobody is waited for). To
  /// be called several times a second.
  void Update(const RunState& state, const std::string& waiting);

  /// Prints what is left, and takes the last line away.
  void Finish(const RunState& state);

  /// Prints a line of the caller's between the others.
  void Say(const std::string& line);

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
