#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "reference/base/ThreadPools.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/FrameEvent.h"
#include "workbench/record/RunEventSource.h"
#include "workbench/record/RunState.h"

/// Observes a run: makes events from log lines and from the pool's tasks, passes each to the sink
/// as a line of the flight record, and keeps the state of the run that results from the events.
///
/// The observer of the log and of the pools while it exists. Created and destroyed by the run's
/// thread; otherwise thread-safe. A line of the record that cannot be written is counted by
/// RecordWriter.
class RunMonitor {
 public:
  /// Receives the lines of the record in order, one or several with line feeds between them. Called
  /// while the monitor's lock is held.
  using LineSink = std::function<void(const std::string& lines)>;

  /// Called when a plugin's load task begins, on its thread, before the event of that; no lock of
  /// the monitor is held.
  using StartHook = std::function<void(const std::string& plugin)>;

  /// Both may be empty.
  explicit RunMonitor(LineSink sink, StartHook beforeStart = {});
  ~RunMonitor();
  RunMonitor(const RunMonitor&) = delete;
  RunMonitor& operator=(const RunMonitor&) = delete;

  /// Writes the head. Call it first.
  void Begin(const RunHead& head);

  /// Sets the plugins and what their starts wait for. Call it before Frame_Start.
  void SetPlugins(const std::vector<PluginHead>& plugins);

  /// Adds an event of the host. When its thread is 0, time and thread are set to the caller's.
  void Add(RunEvent event);

  RunState State() const;

  /// The frame's log lines on files that could not be read, dropped plugins and failed steps, in
  /// order.
  std::vector<FrameEvent> Notes() const;

 private:
  void OnLogLine(int level, const std::string& module, const std::string& text);
  void OnTask(const TaskEvent& event);
  void OnTaskPosted(std::uint64_t task);
  RunEventSource::Where FlushPosted();
  void AddEvents(const std::vector<RunEvent>& events);

  const LineSink m_sink;
  const StartHook m_beforeStart;

  mutable std::mutex m_mutex;  // held while lines are written
  std::mutex m_postedMutex;    // taken under m_mutex or alone, and held only for a moment

  // Guarded by m_mutex.
  RunEventSource m_source;
  RunState m_state;
  std::vector<FrameEvent> m_notes;
  bool m_sinkClosed = false;  // after the event kEnd or kCrash, which is the record's last line

  // Guarded by m_postedMutex: posted tasks of which no event has been made yet.
  std::vector<std::pair<RunEventSource::Where, std::uint64_t>> m_posted;
};
