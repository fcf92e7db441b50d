#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/Commands.h"
#include "host/RunClock.h"
#include "host/RunMonitor.h"
#include "host/RunRecord.h"
#include "host/RunVerdict.h"
#include "host/Screen.h"
#include "host/StatusText.h"
#include "workbench/product/Findings.h"

/// Says what happens in a run to whoever wants to know: on the screen or as JSON, in the log, in
/// the flight record, and on standard error what must not be missed.
///
/// Used by the run's thread alone. An output that cannot be written is said once on standard error
/// and becomes a finding of the run; nothing else is lost.
class RunReporter {
 public:
  RunReporter(const Options& options, HostContext& context, const RunRecord& record,
              RunMonitor& monitor);

  /// The cycles that plugins wait in, as they are to be shown.
  void SetCycles(std::vector<std::string> cycles) { m_cycles = std::move(cycles); }

  /// The run's first line in the log.
  void LogHead(const RunHead& head);

  void Say(const Finding& finding);

  /// A line for the screen and the log.
  void SayLine(const std::string& line);

  /// Sentences that must not be missed: findings of the run, on standard error.
  void SayError(const std::vector<std::string>& sentences);

  /// `isStopping`: a stop was asked for already.
  void SayUp(std::int64_t milliseconds, bool isStopping);

  /// What has happened since the last call, and who is waited for: plugins, else what `otherwise`
  /// says. To be called several times a second; which plugins are waited for goes to the log when
  /// it changes, and once a minute.
  void ShowProgress(const std::string& otherwise);

  /// Whether an output has been found to lose something since the last call.
  bool FoundLoss();

  /// The table or the object at the end.
  void ShowEnd(const RunHead& head, const RunClock& clock, const RunFacts& facts,
               const Verdict& verdict);

 private:
  bool InTable() const { return !m_options.json && !m_options.events; }
  bool ReportLoss(bool& said, bool isLost, const std::string& what);

  const Options& m_options;
  Output& m_output;
  const RunRecord& m_record;
  RunMonitor& m_monitor;
  Screen m_screen;

  std::vector<std::string> m_cycles;
  WaitingLog m_waitingLog;
  bool m_outputLost = false;
  bool m_logLost = false;
  bool m_recordLost = false;
};
