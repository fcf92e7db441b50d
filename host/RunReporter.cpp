#include "host/RunReporter.h"

#include <fmt/format.h>

#include <utility>

#include "host/RunJson.h"
#include "host/RunTable.h"
#include "host/StatusText.h"
#include "reference/base/Log.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"
#include "reference/os/LocalText.h"
#include "sdk/base/log.h"
#include "workbench/output/Text.h"
#include "workbench/record/HeadLine.h"

namespace {

constexpr char kModule[] = "host";
constexpr int kProgress = 3;
constexpr int kTolerated = 4;
constexpr int kFailure = 5;

RunEvent EventOf(const Finding& finding) {
  RunEvent event;
  event.kind = RunEvent::Kind::kFinding;
  event.text = finding.text;
  event.severity = finding.severity;
  return event;
}

}  // namespace

RunReporter::RunReporter(const Options& options, HostContext& context, const RunRecord& record,
                         RunMonitor& monitor)
    : m_options(options),
      m_output(context.output),
      m_record(record),
      m_monitor(monitor),
      m_screen(context.output, options.color) {}

void RunReporter::LogHead(const RunHead& head) {
  IKPXFormatLog(kProgress, kModule, "%s", HeadLine(head).c_str());
}

void RunReporter::ReportFinding(const Finding& finding) {
  m_monitor.Add(EventOf(finding));
  const std::string text = Escaped(finding.text);
  const bool bad = finding.severity == Severity::kError;
  IKPXFormatLog(bad ? kFailure : kTolerated, kModule, "%s", text.c_str());
  if (ShowsTable()) {
    m_screen.PrintLine(std::string(Word(finding.severity)) + ": " + text);
  } else {
    m_output.WriteError(std::string(Word(finding.severity)) + ": " + text);
  }
}

void RunReporter::ReportLine(const std::string& line) {
  IKPXFormatLog(kProgress, kModule, "%s", line.c_str());
  if (ShowsTable()) m_screen.PrintLine(line);
}

void RunReporter::ReportError(const std::vector<std::string>& sentences) {
  if (ShowsTable()) m_screen.Finish(m_monitor.State());
  for (const std::string& sentence : sentences) {
    m_monitor.Add(EventOf({Severity::kError, sentence}));
    IKPXFormatLog(kFailure, kModule, "%s", sentence.c_str());
    m_output.WriteError(Escaped(sentence));
  }
}

void RunReporter::ReportUp(std::int64_t milliseconds, bool isStopping) {
  RunEvent up;
  up.kind = RunEvent::Kind::kUp;
  up.milliseconds = milliseconds;
  m_monitor.Add(std::move(up));
  if (ShowsTable()) m_screen.Finish(m_monitor.State());
  const char* how = isStopping          ? ""
                    : m_options.seconds ? " Stops by itself; Ctrl-C stops it now."
                                        : " Ctrl-C stops it.";
  ReportLine(fmt::format("Up after {} ms.{}", milliseconds, how));
}

void RunReporter::ShowProgress(const std::string& otherwise) {
  const RunState state = m_monitor.State();
  const std::int64_t now = SteadyNanoseconds();
  const std::string line = WaitingLine(state, m_cycles, now);
  if (ShowsTable()) m_screen.Update(state, line.empty() ? otherwise : line);
  if (m_waitingLog.IsDue(WaitedFor(state, m_cycles), now)) {
    IKPXFormatLog(kProgress, kModule, "%s", line.c_str());
  }
}

bool RunReporter::ReportLosses() {
  const bool output = ReportLoss(m_outputLost, !m_output.Error().empty(),
                                 "standard output (" + m_output.Error() + ")");
  const bool log = ReportLoss(m_logLost, LostLogLines() != 0, "the log " + m_options.log);
  const bool record = ReportLoss(m_recordLost, m_record.LostLines() != 0,
                                 "the flight record " + LocalFromPath(m_record.File()));
  return output || log || record;
}

bool RunReporter::ReportLoss(bool& said, bool isLost, const std::string& what) {
  if (!isLost || std::exchange(said, true)) return false;
  const std::string text = what + " cannot be written: a part of it is lost";
  if (ShowsTable()) m_screen.Finish(m_monitor.State());
  IKPXFormatLog(kFailure, kModule, "%s", text.c_str());
  m_output.WriteError(text);
  m_monitor.Add(EventOf({Severity::kError, text}));
  return true;
}

void RunReporter::ShowEnd(const RunHead& head, const RunClock& clock, const RunFacts& facts,
                          const Verdict& verdict) {
  using Json = nlohmann::ordered_json;
  IKPXFormatLog(verdict.exitStatus == kOk ? kProgress : kFailure, kModule, "%s",
                verdict.sentence.c_str());
  const RunState state = m_monitor.State();
  if (m_options.json) {
    const Json json = RunJson(head, clock, facts, state, verdict, SnapshotPlatform(), SnapshotLpc(),
                              LocalFromPath(m_record.File()));
    m_output.Write(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  } else if (ShowsTable()) {
    m_screen.Finish(state);
    const TableStyle style{m_screen.Columns(), m_screen.Colored(), m_options.all};
    m_output.Write("\n" + RunTable(state, verdict, style));
  }
  m_output.Flush();
}
