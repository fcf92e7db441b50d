#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "workbench/record/FrameEvent.h"
#include "workbench/record/LinePlugins.h"
#include "workbench/record/LogStamp.h"
#include "workbench/record/RecordedRun.h"
#include "workbench/record/RunEventSource.h"

/// Makes the run that a log's lines stand for, from the lines in their order.
///
/// Not thread-safe. Lines may be missing anywhere.
class LogRun {
 public:
  /// `plugins`: of the product; empty when they are not known, and the plugins are those that the
  /// lines name.
  explicit LogRun(const std::vector<PluginHead>& plugins);

  /// Whether a line of this kind cannot belong to the run any more, but begins another one.
  bool EndsBefore(FrameEvent::Kind kind) const;

  /// HUB's first line of a run.
  void AddHead(const LogStamp& stamp, const RunHead& head);
  /// A line of the frame; `thread` where the line names it.
  void AddFrame(const LogStamp& stamp, std::optional<std::uint64_t> thread, FrameEvent event);
  /// A line of a library's loader, and any other line, of a log whose lines name their threads.
  void AddLoader(std::uint64_t thread, const std::string& text);
  void AddOther(std::uint64_t thread, const std::string& text);
  /// A line of the frame that has no stamp that can be read: it is left out.
  void AddUnstamped() { ++m_unstamped; }

  /// Whether what else is logged on the thread matters: it loads a library or runs an Init.
  bool Observes(std::uint64_t thread) const { return m_observed.count(thread) != 0; }
  bool HasFrameLines() const { return m_hasFrameLines; }

  /// The run, without a name. Call it once, after the last line.
  RecordedRun Finish();

 private:
  std::int64_t At(const LogStamp& stamp);
  void AddPhaseOfInit(std::int64_t at, std::uint64_t thread, const FrameEvent& event);
  void Observe(std::uint64_t thread, FrameEvent::Kind kind);
  void NotePlugin(const FrameEvent& event);
  void CheckCount(const FrameEvent& event);
  void Add(std::vector<RunEvent> events);
  void CorrectReason(RunEvent& event) const;

  RecordedRun m_run;
  RunEventSource m_source;
  LinePlugins m_linePlugins;
  std::map<std::string, std::string> m_idByText;  // of plugins whose ID the log escapes
  std::set<std::string> m_known;                  // plugins of m_run
  std::set<std::string> m_initBegun;              // whose Init's begin is in the log
  std::set<std::string> m_unInitBegun;
  std::set<std::uint64_t> m_observed;
  std::set<FrameEvent::Kind> m_seen;
  std::map<bool, std::int64_t> m_lastCount;  // of the start (true) and the stop
  bool m_hasHead = false;
  bool m_hasFrameLines = false;
  bool m_beginIsMissing = false;
  bool m_countsAreMixed = false;
  bool m_countsHaveAGap = false;
  std::size_t m_unstamped = 0;

  // The clock.
  std::optional<LogStamp> m_first;
  std::int64_t m_lastStamp = 0;  // as it stands in the log
  std::int64_t m_shift = 0;      // added to stamps: days passed, clock set back
  std::int64_t m_last = 0;
  std::int64_t m_setBack = 0;
};
