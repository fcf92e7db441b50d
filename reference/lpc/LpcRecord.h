#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sdk/lpc/lpc.h"

/// Everything passed to the reference local-procedure-call framework since the last
/// TevLPCFrameInit.
struct LpcRecord {
  bool up = false;
  std::string name;
  std::optional<PlatformInfo> info;   // none until the first TevLPCFrameInit
  std::vector<std::string> notified;  // texts of the start notifications, in order
};

/// A copy of the current record, which is kept after TevLPCFrameUnInit. Thread-safe.
LpcRecord SnapshotLpc();
