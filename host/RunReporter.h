#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/Commands.h"
#include "host/Finding.h"
#include "host/RunClock.h"
#include "host/RunMonitor.h"
#include "host/RunRecord.h"
#include "host/RunVerdict.h"
#include "host/Screen.h"
#include "host/StatusText.h"

/// Reports what happens in a run: on the screen or as JSON, in the log, in the flight record, and
/// errors also on standard error.
///
/// Used by the run's thread alone. When an output cannot be written, that is reported once on
/// standard error and as a finding of the run; the other outputs go on.
class RunReporter {
 public:
  RunReporter(const Options& options, HostContext& context, const RunRecord& record,
              RunMonitor& monitor);

  /// The dependency cycles of the product, as the texts to be shown.
  void SetCycles(std::vector<std::string> cycles) { m_cycles = std::move(cycles); }

  /// The run's first line in the log.
  void LogHead(const RunHead& head);

  void ReportFinding(const Finding& finding);

  /// Writes a line to the screen and the log.
  void ReportLine(const std::string& line);

  /// Reports each sentence as an error: on standard error, in the log, and as a finding of the run.
  void ReportError(const std::vector<std::string>& sentences);

  /// Reports that all plugins have been counted. `isStopping`: a stop was requested already.
  void ReportUp(std::int64_t milliseconds, bool isStopping);

  /// Shows what has happened since the last call and which plugins the run waits for; when it waits
  /// for none, shows `otherwise`. Call it several times a second. The plugins waited for are also
  /// logged, when they change and once a minute.
  void ShowProgress(const std::string& otherwise);

  /// Reports outputs that cannot be written, each once. True when this call reported one.
  bool ReportLosses();

  /// Prints the table or the JSON object at the end of the run.
  void ShowEnd(const RunHead& head, const RunClock& clock, const RunFacts& facts,
               const Verdict& verdict);

 private:
  bool ShowsTable() const { return !m_options.json && !m_options.events; }
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
