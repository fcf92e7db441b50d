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

/// Watches a run: makes events of what is logged and of what the pool does, writes each to the
/// flight record as it happens, passes it on, and keeps the state that follows from them.
///
/// While one exists it is the log's and the pool's observer. Made and destroyed by the run; fed
/// from any thread, asked from any thread. A line of the record that cannot be written is counted
/// by the writer.
class RunMonitor {
 public:
  /// Takes lines of the record, one or several with line feeds between them, in order; called under
  /// the monitor's lock.
  using LineSink = std::function<void(const std::string& lines)>;

  /// `sink` may be empty.
  explicit RunMonitor(LineSink sink);
  ~RunMonitor();
  RunMonitor(const RunMonitor&) = delete;
  RunMonitor& operator=(const RunMonitor&) = delete;

  /// Writes the head. The first call.
  void Begin(const RunHead& head);

  /// Names the plugins, with what their starts wait for, before Frame_Start.
  void SetPlugins(const std::vector<PluginHead>& plugins);

  /// Adds an event of the host's own: its time and thread are set here when it has no thread.
  void Add(RunEvent event);

  RunState State() const;

  /// What the frame logged that is no plugin's start or stop: files that could not be read, plugins
  /// dropped, reasons of a failure, in order.
  std::vector<FrameEvent> Notes() const;

 private:
  void OnLogLine(int level, const std::string& module, const std::string& text);
  void OnTask(const TaskEvent& event);
  void OnTaskPosted(std::uint64_t task);
  RunEventSource::Where Here();
  void Take(const std::vector<RunEvent>& events);

  const LineSink m_sink;

  mutable std::mutex m_mutex;  // held while lines are written
  std::mutex m_postedMutex;    // taken under m_mutex or alone, for a moment

  // Guarded by m_mutex.
  RunEventSource m_source;
  RunState m_state;
  std::vector<FrameEvent> m_notes;
  bool m_sinkClosed = false;  // by the end or the crash, which are the last line

  // Guarded by m_postedMutex: tasks that were posted and not taken yet.
  std::vector<std::pair<RunEventSource::Where, std::uint64_t>> m_posted;
};
