#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workbench/record/FrameEvent.h"

// The frame's log lines, taken apart: the one place that knows their texts.

/// A log line that is an event: its texts with the fields between them.
///
/// The texts stand between the line's first field (the function) and its last (the source).
struct FrameLogRow {
  enum class Field { kNone, kPlugin, kPath, kReason, kMilliseconds, kNumber, kStep };
  enum class Level { kAny, kBelowFailure, kFailure, kFatal };

  FrameEvent::Kind kind;
  const char* name;  // of the kind, for messages
  Level level;
  const char* before;
  // Pairs of a field and the text behind it; those that a row does not use are kNone and null.
  Field first;
  const char* behindFirst;
  Field second;
  const char* behindSecond;
  Field third;
  const char* behindThird;
};

/// All rows. A line is the event of the first one that it matches.
const std::vector<FrameLogRow>& FrameLogRows();

/// Whether the line is one of the row's, and the event that it then is.
///
/// Plugin names, paths and reasons hold any bytes. The texts are found from the line's two ends: a
/// number ends its row, and of a text between two fields the last place counts.
std::optional<FrameEvent> MatchFrameLog(const FrameLogRow& row, int level,
                                        const std::string& module, const std::string& text);

/// The event that a log line is; none for a line that is no event. Any thread.
std::optional<FrameEvent> ParseFrameLog(int level, const std::string& module,
                                        const std::string& text);
