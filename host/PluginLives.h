#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// What is known of one plugin's life.
struct PluginLife {
  enum class Phase {
    kWaiting,  // for the plugins that it depends on
    kInInit,   // its Init is running
    kStarted,
    kInitFailed,
    kNotLoaded,
    kInUnInit,  // its UnInit is running
    kStopped,
    kStopRefused
  };

  std::string name;
  Phase phase = Phase::kWaiting;
  Phase started = Phase::kWaiting;              // how the start ended; kWaiting when it has not
  std::int32_t startMs = -1;                    // what Init cost; -1 when it has not returned
  std::int32_t stopMs = -1;                     // what UnInit cost
  std::string reason;                           // why the start failed, in one line
  std::chrono::steady_clock::time_point since;  // begin of the phase
};

/// Follows the life of every plugin by the lines that the frame logs.
///
/// Fed from any thread, asked from any thread.
class PluginLives {
 public:
  /// Names a plugin before it has done anything, in the order of the table.
  void Expect(const std::string& name);

  /// Takes one log line.
  void OnLogLine(int level, const std::string& module, const std::string& text);

  /// All lives as they are now.
  std::vector<PluginLife> Snapshot() const;

 private:
  PluginLife& Life(const std::string& name);
  void Enter(const std::string& name, PluginLife::Phase phase);

  mutable std::mutex m_mutex;

  // Guarded by m_mutex.
  std::vector<PluginLife> m_lives;
  std::map<std::string, std::size_t> m_positions;     // of a name in m_lives
  std::map<std::thread::id, std::string> m_onThread;  // the plugin whose turn a thread runs
};
