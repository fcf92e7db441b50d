#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "workbench/timeline/RecordedWork.h"

/// One change of a run: what would it have taken if...
struct WhatIfChange {
  enum class Kind {
    kWorkers,  // "workers=4": so many threads
    kPoll,     // "poll=50": the frame sleeps so many milliseconds; 0: it waits for no look
    kWork,     // "video.server=120": milliseconds of its start
    kShare,    // "video.server=50%": of the recorded ones
    kCut,      // "cut a->b": a, which depends on b, no longer does
    kAdd       // "add a->b": a depends on b
  };

  Kind kind = Kind::kPoll;
  double number = 0;       // of workers, milliseconds or percent
  std::size_t plugin = 0;  // whose work it is, or that depends on `other`
  std::size_t other = 0;
  std::string text;  // as it was given
};

/// What a what-if asks for, or why it cannot be answered: one sentence.
struct ParsedWhatIf {
  std::vector<WhatIfChange> changes;
  std::string error;  // if not empty, there are no changes
};

/// Reads changes for a run, each as at WhatIfChange::Kind; the arrow may also be "→". Later changes
/// see the dependencies that earlier ones have left.
ParsedWhatIf ParseWhatIf(const std::vector<std::string>& texts, const Timeline& timeline);

/// Changes the work of the start, or of the stop, where each edge leads the other way and the
/// plugins' times stay as they are.
void Apply(const std::vector<WhatIfChange>& changes, bool isStop, RecordedWork& recorded);
