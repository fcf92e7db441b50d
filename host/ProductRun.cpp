#include "host/ProductRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host/CrashReport.h"
#include "host/FileContent.h"
#include "host/PluginHeads.h"
#include "host/ProductCheck.h"
#include "host/ProductReading.h"
#include "host/RunHeads.h"
#include "host/StatusText.h"
#include "reference/base/ThreadPools.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/os/LocalText.h"
#include "sdk/base/log.h"
#include "sdk/base/path.h"
#include "workbench/output/Text.h"
#include "workbench/product/StartGraph.h"
#include "workbench/report/ReportHtml.h"

namespace {

constexpr std::chrono::milliseconds kTick{50};
constexpr std::chrono::seconds kLongestNameReading{2};
constexpr char kFrameStop[] = "Frame_Stop";
constexpr char kReadingOfFiles[] = "the reading of the product's files";
constexpr double kLastTasksSeconds = 0.2;
constexpr double kLongestCheckSeconds = 5;
constexpr double kLongestDisplacement = 2;  // seconds

double SecondsSince(std::int64_t beginNs) {
  return static_cast<double>(SteadyNanoseconds() - beginNs) * 1e-9;
}

std::string PlatformError() {
  char text[512] = {};
  KPX_GetLastError(text, sizeof(text));
  return text;
}

[[noreturn]] void EndProcess(ExitStatus status) {
  AnnounceExit();
  std::_Exit(status);
}

}  // namespace

ProductRun::ProductRun(const Options& options, HostContext& context)
    : m_options(options),
      m_context(context),
      m_waking(context.stop),
      m_clock(RunClock::Now()),
      m_bin(GetCurExeDir()),
      m_record(options, PathFromLocal(m_bin).parent_path(), m_clock),
      m_delays(DelaysOf(options.delays)),
      m_monitor(
          [this](const std::string& line) {
            if (const RecordPermit permit; permit) m_record.WriteLine(line);
            if (m_options.events) m_context.output.Write(line + "\n");
          },
          [this](const std::string& plugin) { m_delays.Wait(plugin); }),
      m_reporter(options, context, m_record, m_monitor),
      m_driver([&stop = context.stop] { stop.Wake(); }) {}

ExitStatus ProductRun::Run() {
  Begin();
  if (LoadFrame() && Initialise()) {
    if (!m_stopAsked && Start()) WaitForStopRequest();
    Stop();
  }
  const Verdict verdict = End();
  // Plugin code that still runs must not run while main returns and destroys static objects.
  if (MayStillRun() || (m_early && !m_early->IsDone())) EndProcess(verdict.exitStatus);
  return verdict.exitStatus;
}

void ProductRun::Begin() {
  m_head = MakeRunHead(m_clock, m_bin, m_context.commandLine, ReadName(), m_options.fullSleep);
  SetCrashRecord(m_record.CrashFile(), m_record.File());
  SetCrashOutput(m_context.output.File(), m_options.json     ? CrashOutput::kObject
                                          : m_options.events ? CrashOutput::kEvent
                                                             : CrashOutput::kNothing);
  m_monitor.Begin(m_head);
  m_reporter.LogHead(m_head);
  for (const Finding& finding : m_record.Findings()) m_reporter.ReportFinding(finding);
  const std::string delays = DelaysText(m_options.delays);
  if (!delays.empty()) m_reporter.ReportFinding({Severity::kNote, delays});
}

bool ProductRun::LoadFrame() {
  try {
    m_frame.emplace(FrameLibrary::PathBesideProgram());
    return true;
  } catch (const std::runtime_error& error) {
    m_facts.failure = error.what();
    m_reporter.ReportError({m_facts.failure});
    return false;
  }
}

/// The product's name and version from Product.xml, for the head. Empty when the file cannot be
/// read in time; Frame_Init then has to wait for it as well.
ProductName ProductRun::ReadName() {
  m_driver.Begin([this] { m_name = NameOfProduct(); });
  return m_driver.WaitForEnd(kLongestNameReading) ? m_name : ProductName();
}

/// Calls Frame_Init and reports what is wrong with the product. False when Frame_Init failed.
bool ProductRun::Initialise() {
  std::int32_t result = -1;
  m_early.emplace(PathFromLocal(m_bin), m_options.module,
                  [&stop = m_context.stop] { stop.Wake(); });
  const std::int64_t beginNs = SteadyNanoseconds();
  Call("Frame_Init", [this, &result] {
    AddPhase(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameInit);
    result = InitialiseFrame(*m_frame);
    AddPhase(RunEvent::Kind::kPhaseEnd, RunPhase::kFrameInit);
  });
  m_facts.initResult = result;
  if (result != 0) {
    ExplainFailure();
    return false;
  }
  ReportModel(SteadyNanoseconds() - beginNs);
  return true;
}

/// Calls Frame_Start. False when it failed.
bool ProductRun::Start() {
  std::int32_t result = -1;
  m_startNs = SteadyNanoseconds();
  Call("Frame_Start", [this, &result] { result = m_frame->Start(); });
  m_facts.startResult = result;
  if (result != 0) m_facts.failure = "the platform did not start: " + PlatformError();
  return result == 0;
}

/// Whether plugin code may still run: in a task, or on a thread of a plugin that refused to stop.
bool ProductRun::MayStillRun() const {
  return m_facts.unfinishedTasks != 0 || CountTotals(m_monitor.State()).stopRefused != 0;
}

/// Waits for the end of the plugins' start, and then for the stop request.
void ProductRun::WaitForStopRequest() {
  WaitUntil([this] { return m_stopAsked || StartCallbackResult(); });
  m_facts.callbackResult = StartCallbackResult();
  if (m_facts.callbackResult == false) {
    const std::optional<std::string> logged = StartFailure(m_monitor.Notes());
    m_facts.failure = "the plugins could not be started: " + (logged ? *logged : PlatformError());
    return;
  }
  if (m_facts.callbackResult) {
    m_reporter.ReportUp((SteadyNanoseconds() - m_startNs) / 1'000'000, m_stopAsked);
    if (m_options.untilUp && !m_stopAsked) RequestStop("--until-up");
  }
  WaitUntil([this] { return m_stopAsked; });
}

/// Calls Frame_Stop and Frame_UnInit.
void ProductRun::Stop() {
  m_delays.End();
  m_stopLimit.emplace(m_options.stopTimeout, SteadyNanoseconds());
  if (m_facts.startResult) Call(kFrameStop, [this] { m_frame->Stop(); });
  ReportNotes();
  // A plugin is counted shortly before its task ends. A plugin still in its Init is not waited for:
  // the stop has already counted it, and may have unmapped what it depends on.
  const std::int64_t stopped = SteadyNanoseconds();
  WaitUntil(
      [stopped] { return UnfinishedTasks() == 0 || SecondsSince(stopped) > kLastTasksSeconds; });
  Call("Frame_UnInit", [this] { m_frame->UnInit(); });
  const std::int64_t uninitialised = SteadyNanoseconds();
  WaitUntil([this, uninitialised] {
    return m_early->IsDone() || SecondsSince(uninitialised) > kLongestCheckSeconds;
  });
  ReportEarlyFindings(std::chrono::milliseconds(0));
  m_stopLimit.reset();
}

/// Reports how the run ended on the screen, in the log and in the record.
Verdict ProductRun::End() {
  m_facts.unfinishedTasks = UnfinishedTasks();
  m_reporter.ReportLosses();
  Verdict verdict = Judge(m_facts, m_monitor.State());
  if (!ClaimLastOutput()) EndProcess(verdict.exitStatus);
  m_reporter.ShowEnd(m_head, m_clock, m_facts, verdict);
  // If writing the end failed, the exit status and the record report that.
  if (m_reporter.ReportLosses()) verdict = Judge(m_facts, m_monitor.State());
  if (auto crash = ReportedCrash()) m_monitor.Add(std::move(*crash));
  if (!m_monitor.State().Crash()) AddEnd(verdict);
  if (!WriteReport()) verdict = Judge(m_facts, m_monitor.State());
  m_context.output.Flush();
  LastOutputIsWritten();
  if (m_reporter.ReportLosses()) verdict = Judge(m_facts, m_monitor.State());
  return verdict;
}

void ProductRun::AddEnd(const Verdict& verdict) {
  RunEvent end;
  end.kind = RunEvent::Kind::kEnd;
  end.status = verdict.status;
  end.number = verdict.exitStatus;
  end.totals = CountTotals(m_monitor.State());
  end.text = verdict.sentence;
  m_monitor.Add(std::move(end));
  m_record.End();
}

/// Writes the page of --report, which shows the run's end too. False when it cannot be written.
bool ProductRun::WriteReport() {
  if (m_options.reportPage.empty()) return true;
  try {
    if (m_record.File().empty()) {
      throw UsageError("--report: there is no flight record to make it of");
    }
    const Timeline timeline = MakeTimeline(ReadRecordedRun(m_record.File()));
    WriteFileText("--report", m_options.reportPage, ReportHtml(timeline));
    return true;
  } catch (const std::runtime_error& error) {  // also UsageError
    m_reporter.ReportError({error.what()});
    return false;
  }
}

/// Runs `call` on the driver's thread and waits for its end. `what`: its name, for the report when
/// the run ends before the call has returned.
void ProductRun::Call(const char* what, std::function<void()> call) {
  m_facts.pendingCall = what;
  m_callSince = SteadyNanoseconds();
  m_driver.Begin(std::move(call));
  WaitUntil([this] { return m_driver.WaitForEnd(std::chrono::milliseconds(0)); });
  m_facts.pendingCall.clear();
}

/// Returns when `over` does. What makes it true must wake m_context.stop afterwards, or is noticed
/// up to kTick later.
void ProductRun::WaitUntil(const std::function<bool()>& over) {
  while (!over()) {
    if (const auto request = m_context.stop.WaitFor(kTick)) OnStopRequest(*request);
    Tick();
  }
}

void ProductRun::Tick() {
  if (auto crash = ReportedCrash()) EndByCrash(std::move(*crash));
  while (const auto request = m_context.stop.WaitFor(std::chrono::milliseconds(0))) {
    OnStopRequest(*request);
  }
  if (!m_stopAsked && TimeIsUp()) RequestStop(fmt::format("--seconds {:g}", *m_options.seconds));
  if (!m_stopAsked && StartTimeIsUp()) {
    RequestStop(fmt::format("--start-timeout {:g}", *m_options.startTimeout));
  }
  WarnOfDisplaced();
  const bool showsCall = !m_facts.pendingCall.empty() && m_facts.pendingCall != kFrameStop;
  m_reporter.ShowProgress(showsCall ? WaitingForCall(m_facts.pendingCall, SecondsSince(m_callSince))
                                    : std::string());
  m_reporter.ReportLosses();
  ReportEarlyFindings(std::chrono::milliseconds(0));
  CheckStopLimit();
}

/// Warns that a stop signal no longer reaches HUB, if that lasts two seconds or more: for a shorter
/// time the C library itself ignores SIGINT, while `system` waits for a plugin's command.
void ProductRun::WarnOfDisplaced() {
  const std::vector<StopRequest> displaced = m_context.stop.Displaced();
  for (auto since = m_displacedSince.begin(); since != m_displacedSince.end();) {
    const bool goesOn = std::count(displaced.begin(), displaced.end(), since->first) != 0;
    since = goesOn ? std::next(since) : m_displacedSince.erase(since);
  }
  for (const StopRequest request : displaced) {
    const auto since = m_displacedSince.emplace(request, SteadyNanoseconds()).first;
    if (SecondsSince(since->second) < kLongestDisplacement) continue;
    if (!m_displacedReported.insert(request).second) continue;
    m_reporter.ReportFinding(
        {Severity::kWarning, std::string("code of a plugin handles or ignores ") + Name(request) +
                                 ": it does not stop HUB"});
  }
}

void ProductRun::OnStopRequest(StopRequest request) {
  const std::string name = Name(request);
  if (std::exchange(m_signalled, true)) {
    EndEarly(name + ", a second request");
  }
  if (m_stopAsked)
    m_reporter.ReportLine("It is stopping already; " + name + " again ends it at once.");
  RequestStop(name);
}

void ProductRun::RequestStop(const std::string& who) {
  RunEvent request;
  request.kind = RunEvent::Kind::kStopRequest;
  request.text = who;
  m_monitor.Add(std::move(request));
  m_delays.End();
  if (std::exchange(m_stopAsked, true)) return;
  m_facts.stoppedBy = who;
  m_reporter.ReportLine("Stopping (" + who + ").");
  m_stopLimit.emplace(m_options.stopTimeout, SteadyNanoseconds());
}

bool ProductRun::TimeIsUp() const {
  return m_options.seconds && m_startNs != 0 && SecondsSince(m_startNs) >= *m_options.seconds;
}

bool ProductRun::StartTimeIsUp() const {
  return m_options.startTimeout && !StartCallbackResult() &&
         SecondsSince(m_clock.nanoseconds) >= *m_options.startTimeout;
}

void ProductRun::CheckStopLimit() {
  if (!m_stopLimit) return;
  const RunState state = m_monitor.State();
  const bool stuck = UnfinishedTasks() == 0 && OnlyWaiting(state);
  if (m_stopLimit->Expired(SteadyNanoseconds(), CountStopped(state), stuck)) {
    const bool ofPlugins = m_facts.pendingCall.empty() || m_facts.pendingCall == kFrameStop;
    const std::string rest = stuck       ? "what is left can never stop, and {:g} s have passed"
                             : ofPlugins ? "no plugin has ended for {:g} s"
                                         : "{:g} s have passed since the stop request";
    EndEarly(fmt::format(fmt::runtime(rest), m_stopLimit->Seconds()));
  }
}

/// Ends the process in the middle of the run, after all reports of the run's end.
void ProductRun::EndEarly(const std::string& why) {
  m_facts.unfinishedTasks = UnfinishedTasks();
  // Between two calls: report the next one as not returned.
  if (m_facts.pendingCall.empty()) m_facts.pendingCall = NextCall(m_monitor.State());
  m_reporter.ReportError({why + ": " + Judge(m_facts, m_monitor.State()).sentence});
  EndProcess(End().exitStatus);
}

/// Reports on standard output, where that is still possible, that a crash has ended the run. The
/// crashed thread ends the process.
void ProductRun::EndByCrash(RunEvent crash) {
  m_monitor.Add(std::move(crash));
  EndProcess(End().exitStatus);
}

/// Passes on what the frame handed over, and reports the early findings that are known in time.
void ProductRun::ReportModel(std::int64_t frameInitNs) {
  PlatformRecord platform = SnapshotPlatform();
  if (!platform.productModel) return m_early->Continue(std::nullopt);
  const ProductModel& model = *platform.productModel;
  std::vector<std::string> cycles;
  for (const auto& cycle : FindCycles(MakeStartGraph(model))) cycles.push_back(CycleText(cycle));
  m_reporter.SetCycles(std::move(cycles));
  const std::vector<PluginHead> plugins = PluginHeads(model, m_bin);
  m_monitor.SetPlugins(plugins);
  ReportUndelayed(plugins);
  m_early->Continue(HandedOverOf(std::move(platform)));
  ReportEarlyFindings(EarlyCheck::Limit(std::chrono::nanoseconds(frameInitNs)));
}

/// Warns of each --delay for a plugin that the frame does not start.
void ProductRun::ReportUndelayed(const std::vector<PluginHead>& plugins) {
  for (const std::string& plugin : UnknownDelayed(m_options.delays, plugins)) {
    m_reporter.ReportFinding({Severity::kWarning, "--delay \"" + Escaped(plugin) +
                                                      "\": the frame starts no plugin of this ID"});
  }
}

/// Reports the early findings, once, when they are known within `limit`.
void ProductRun::ReportEarlyFindings(std::chrono::milliseconds limit) {
  if (!m_early || m_facts.initResult != 0) return;
  const std::optional<EarlyFindings> found = m_early->WaitFor(limit);
  if (!found) return;
  for (const Finding& finding : FirstFindings(found->findings, m_bin)) {
    m_reporter.ReportFinding(finding);
  }
}

/// Reports the frame's notes that were added since the last call.
void ProductRun::ReportNotes() {
  const std::vector<FrameEvent> notes = m_monitor.Notes();
  for (; m_notesReported < notes.size(); ++m_notesReported) {
    if (const auto finding = FindingOf(notes[m_notesReported])) m_reporter.ReportFinding(*finding);
  }
}

/// Reports why Frame_Init failed.
void ProductRun::ExplainFailure() {
  m_early->Continue(std::nullopt);
  std::vector<std::string> sentences;
  Call(kReadingOfFiles, [&] { sentences = m_early->Wait().refusals; });
  if (sentences.empty()) sentences.push_back(FrameReason(m_monitor.Notes()));
  m_reporter.ReportError(FirstSentences(sentences, m_bin));
  m_facts.failure = sentences.front();
  if (sentences.size() > 1) m_facts.failure += fmt::format(" (and {} more)", sentences.size() - 1);
}

void ProductRun::AddPhase(RunEvent::Kind kind, const char* phase) {
  RunEvent event;
  event.kind = kind;
  event.phase = phase;
  m_monitor.Add(std::move(event));
}
