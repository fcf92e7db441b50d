#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "host/Screen.h"
#include "reference/os/ChildProcess.h"
#include "reference/os/FileLock.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/shake/ShakePlan.h"
#include "workbench/shake/ShakeReport.h"

/// Runs a product many times, each time as a HUB of its own and in another order, and evaluates the
/// records. Used once, by the run's thread.
///
/// Holds the product's lock, and keeps the runs' records, locks and notes out of the user's state
/// folder. A stop request ends the run that goes on, in order; a second one kills it.
class ShakeSession {
 public:
  /// Throws UsageError when another HUB runs the product, and std::filesystem::filesystem_error
  /// when there is no place for the records.
  ShakeSession(const Options& options, HostContext& context);
  ~ShakeSession();
  ShakeSession(const ShakeSession&) = delete;
  ShakeSession& operator=(const ShakeSession&) = delete;

  /// Throws UsageError when the product cannot be run at all.
  ShakeReport Make();

 private:
  void TakeLock();
  void MakeFirstRun();
  void MakePlannedRuns();
  void MakeExperiments();
  bool MayGoOn() const;

  std::optional<FlightRecord> RunOnce(const PlannedRun& run);
  void AddRun(const PlannedRun& run);
  ChildSettings Settings(const PlannedRun& run, const std::filesystem::path& record) const;
  void AwaitEnd(ChildProcess& child);
  void ShowProgress();
  double Seconds() const;
  double StartLimit() const;
  void AddPlaces(ShakeReport& report) const;

  const Options& m_options;
  HostContext& m_context;
  Screen m_screen;
  const std::filesystem::path m_bin;     // absolute
  const std::filesystem::path m_folder;  // of the records
  const std::chrono::steady_clock::time_point m_begin;
  std::optional<FileLock> m_lock;

  std::vector<PluginHead> m_plugins;   // of the first run
  std::vector<std::string> m_started;  // those that the frame starts
  std::vector<ShakeRun> m_runs;
  std::int64_t m_startMs = 0;  // of the first run
  std::int64_t m_delay = 0;    // the longest one, in milliseconds
  std::size_t m_planned = 1;   // runs, with those that were made
  std::size_t m_made = 0;
  ShakeReport m_report;
};
