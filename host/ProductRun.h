#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "host/Commands.h"
#include "host/FrameDriver.h"
#include "host/FrameLibrary.h"
#include "host/RunClock.h"
#include "host/RunMonitor.h"
#include "host/RunRecord.h"
#include "host/RunReporter.h"
#include "host/RunVerdict.h"
#include "host/StopLimit.h"
#include "workbench/product/ProductName.h"

/// One run of the product, from Frame_Init to Frame_UnInit, on the thread `run`.
///
/// The frame's calls run on a driver's thread; this one waits for stop requests, watches the limits
/// and shows what goes on. Used once. A run that would leave something behind, plugins that have
/// not returned or a call of the frame, ends the process instead.
class ProductRun {
 public:
  /// Throws UsageError when the record that was asked for cannot be written.
  ProductRun(const Options& options, HostContext& context);
  ProductRun(const ProductRun&) = delete;
  ProductRun& operator=(const ProductRun&) = delete;

  ExitStatus Run();

 private:
  // The run, in this order.
  void Begin();
  bool LoadFrame();
  bool Initialise();
  bool Start();
  void Stay();
  void Stop();
  Verdict End();
  void AddEnd(const Verdict& verdict);
  bool MayStillRun() const;

  // Waiting, during which stop requests, limits and the screen are looked after.
  void Call(const char* what, std::function<void()> call);
  void Await(const std::function<bool()>& over);
  void Tick();
  void OnStopRequest(StopRequest request);
  void WatchDisplaced();
  void AskToStop(const std::string& who);
  bool TimeIsUp() const;
  bool StartTimeIsUp() const;
  void CheckStopLimit();
  [[noreturn]] void Leave(const std::string& why);
  [[noreturn]] void EndByCrash(RunEvent crash);

  ProductName ReadName();
  void SayFindings();
  void SayNotes();
  void ExplainFailure();
  void AddPhase(RunEvent::Kind kind, const char* phase);

  const Options& m_options;
  HostContext& m_context;
  const RunClock m_clock;
  const std::string m_bin;  // with a separator behind it
  RunRecord m_record;
  RunMonitor m_monitor;
  RunReporter m_reporter;
  std::optional<FrameLibrary> m_frame;
  ProductName m_name;  // written on the driver's thread
  RunHead m_head;
  RunFacts m_facts;

  std::int64_t m_startNs = 0;            // of Frame_Start; 0: not begun
  std::int64_t m_callSince = 0;          // of the pending call
  bool m_stopAsked = false;              // by whomever
  bool m_signalled = false;              // by a signal
  std::optional<StopLimit> m_stopLimit;  // since the stop request
  std::size_t m_notesSaid = 0;
  std::map<StopRequest, std::int64_t> m_displacedSince;  // requests that do not come here
  std::set<StopRequest> m_displacedSaid;

  FrameDriver m_driver;  // destroyed first: its thread uses the others
};
