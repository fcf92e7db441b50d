#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/Commands.h"
#include "host/EarlyCheck.h"
#include "host/FrameDriver.h"
#include "host/FrameLibrary.h"
#include "host/RunClock.h"
#include "host/RunMonitor.h"
#include "host/RunRecord.h"
#include "host/RunReporter.h"
#include "host/RunVerdict.h"
#include "host/RunWaking.h"
#include "host/StartDelays.h"
#include "host/StopLimit.h"
#include "workbench/product/ProductName.h"

/// One run of the product, from Frame_Init to Frame_UnInit, on the thread `run`.
///
/// The frame's calls run on a FrameDriver's thread. This thread waits in StopSignal, which the end
/// of a call, of the start and of the last task wake; every 50 ms it checks the time limits and
/// updates the screen. Used once. Run does not return but ends the process when plugins or a call
/// of the frame have not returned.
class ProductRun {
 public:
  /// Throws UsageError when the file given by --record cannot be written.
  ProductRun(const Options& options, HostContext& context);
  ProductRun(const ProductRun&) = delete;
  ProductRun& operator=(const ProductRun&) = delete;

  ExitStatus Run();

 private:
  // The steps of a run, in this order.
  void Begin();
  bool LoadFrame();
  bool Initialise();
  bool Start();
  void WaitForStopRequest();
  void Stop();
  Verdict End();
  void AddEnd(const Verdict& verdict);
  bool WriteReport();
  bool MayStillRun() const;

  // Waiting; meanwhile stop requests and limits are handled and the screen is updated.
  void Call(const char* what, std::function<void()> call);
  void WaitUntil(const std::function<bool()>& over);
  void Tick();
  void OnStopRequest(StopRequest request);
  void WarnOfDisplaced();
  void RequestStop(const std::string& who);
  bool TimeIsUp() const;
  bool StartTimeIsUp() const;
  void CheckStopLimit();
  [[noreturn]] void EndEarly(const std::string& why);
  [[noreturn]] void EndByCrash(RunEvent crash);

  ProductName ReadName();
  void ReportModel(std::int64_t frameInitNs);
  void ReportEarlyFindings(std::chrono::milliseconds limit);
  void ReportNotes();
  void ReportUndelayed(const std::vector<PluginHead>& plugins);
  void ExplainFailure();
  void AddPhase(RunEvent::Kind kind, const char* phase);

  const Options& m_options;
  HostContext& m_context;
  const RunWaking m_waking;
  const RunClock m_clock;
  const std::string m_bin;  // with a separator behind it
  RunRecord m_record;
  StartDelays m_delays;
  RunMonitor m_monitor;
  RunReporter m_reporter;
  std::optional<FrameLibrary> m_frame;
  std::optional<EarlyCheck> m_early;  // from Frame_Init on
  ProductName m_name;                 // written on the driver's thread
  RunHead m_head;
  RunFacts m_facts;

  std::int64_t m_startNs = 0;            // when Frame_Start was called; 0: not yet
  std::int64_t m_callSince = 0;          // when the pending call began
  bool m_stopAsked = false;              // by a signal or by a time limit
  bool m_signalled = false;              // by a signal
  std::optional<StopLimit> m_stopLimit;  // from the stop request or the stop on
  std::size_t m_notesReported = 0;
  std::map<StopRequest, std::int64_t> m_displacedSince;  // signals whose handler was replaced
  std::set<StopRequest> m_displacedReported;

  FrameDriver m_driver;  // destroyed first: its thread uses the others
};
