#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sdk/lpc/lpc.h"

/// All that the open local-procedure-call framework was given since its last TevLPCFrameInit.
struct LpcRecord {
  bool up = false;
  std::string name;
  std::optional<PlatformInfo> info;   // none until the first TevLPCFrameInit
  std::vector<std::string> notified;  // texts of the start notifications, in order
};

/// A copy of the record as it is now; it stays after TevLPCFrameUnInit. Any thread.
LpcRecord SnapshotLpc();
