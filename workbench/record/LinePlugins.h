#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "workbench/record/FrameEvent.h"

/// Finds the plugin that each of the frame's lines belongs to, in a log whose lines do not name
/// their threads: by the names and paths in the lines, and where a line has none, by being the only
/// plugin that can have logged it.
///
/// Not thread-safe. Events must come in the order of the log.
class LinePlugins {
 public:
  /// The number that stands for the thread of the line's plugin, 0 for a line of no plugin; none
  /// when more than one plugin can have logged it.
  ///
  /// Where the lines before it say with which result a plugin was counted, `event` becomes the line
  /// of that result.
  std::optional<std::uint64_t> Take(FrameEvent& event);

  /// Whether a line that is part of the reason for the failure of `plugin` may have been left out.
  bool MayHaveLostReason(const std::string& plugin) const { return m_unsure.count(plugin) != 0; }

 private:
  using Thread = std::optional<std::uint64_t>;

  /// What is known of the release of a library that must come before the plugin is counted.
  enum class Release { kNone, kDone, kUnsure };

  std::uint64_t ThreadOf(const std::string& plugin);
  Thread OfPath(const std::string& path);
  Thread OfReason(const std::set<std::string>& candidates, bool complete);
  Thread OfRelease();
  void OnPlugin(FrameEvent& event);
  void OnCountedInStop(FrameEvent& event);

  std::map<std::string, std::uint64_t> m_threads;  // by plugin
  std::set<std::string> m_loading;                 // from the task's begin to the library's
  std::set<std::string> m_inInit;
  std::set<std::string> m_inUnInit;
  std::set<std::string> m_unsure;              // see MayHaveLostReason
  std::map<std::string, bool> m_initialised;   // by plugin whose Init has returned: what
  std::set<std::string> m_refused;             // whose UnInit has certainly failed
  std::map<std::string, Release> m_releasing;  // plugins whose library may be released now
  bool m_startSeen = false;                    // from its begin
  bool m_stopSeen = false;
};
