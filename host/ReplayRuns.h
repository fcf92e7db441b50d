#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/Commands.h"
#include "reference/os/ChildProcess.h"
#include "workbench/replay/Replay.h"
#include "workbench/replay/RunHarm.h"

/// Runs a replayed product once for each plugin, with a fault in that plugin, and prints what each
/// fault does to the others.
///
/// Each run is a HUB of its own, stopped once it is up or after a time limit. The product is in a
/// temporary folder, which the destructor removes. Used by one thread.
class ReplayRuns {
 public:
  /// `arguments`: of each HUB run.
  ReplayRuns(Replay replay, const Fault& fault, std::vector<std::string> arguments,
             HostContext& context);
  ~ReplayRuns();
  ReplayRuns(const ReplayRuns&) = delete;
  ReplayRuns& operator=(const ReplayRuns&) = delete;

  /// Throws UsageError when the product cannot be written or run.
  ExitStatus Run();

 private:
  struct Outcome {
    Timeline timeline;
    ChildEnd end;
    bool killed = false;  // it did not end within its limit
  };

  bool RunWithoutFault();
  bool RunWithFault(std::size_t plugin);
  std::optional<Outcome> RunOnce(std::int64_t upLimit);
  void WriteSentence(const std::string& sentence);
  std::int64_t LongestRun() const;
  std::int64_t StopTimeout() const;

  Replay m_replay;
  const Fault m_fault;
  const std::vector<std::string> m_arguments;
  HostContext& m_context;
  const std::filesystem::path m_folder;

  Timeline m_without;        // set by RunWithoutFault
  std::int64_t m_apart = 0;  // by how much begins differ without a fault, in milliseconds
  std::vector<RunHarm> m_harms;
};
