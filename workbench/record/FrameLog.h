#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workbench/record/FrameEvent.h"

// The frame's log lines, taken apart: the one place that knows their texts.

/// A log line that is an event: its texts, with the fields that stand between them.
///
/// The first text begins, and the last one ends, what the frame says between the line's function
/// and its source file.
struct FrameLogRow {
  enum class Field { kPlugin, kPath, kReason, kMilliseconds, kNumber, kPassedOver };
  enum class Level { kAny, kBelowFailure, kFailure, kFatal };

  FrameEvent::Kind kind;
  const char* name;  // of the kind, for messages
  const char* module;
  Level level;
  std::vector<std::string> texts;  // one more than fields
  std::vector<Field> fields;
};

/// All rows. A line is the event of the first one that it matches. Any thread.
const std::vector<FrameLogRow>& FrameLogRows();

/// The event that a log line is as the row has it; none when it is no line of the row.
///
/// Plugin names, paths and reasons hold any bytes, texts of the row among them. So the texts are
/// looked for from the line's ends: of those between two fields, the last place counts.
std::optional<FrameEvent> MatchFrameLog(const FrameLogRow& row, int level,
                                        const std::string& module, const std::string& text);

/// The event that a log line is; none for a line that is no event. Any thread.
std::optional<FrameEvent> ParseFrameLog(int level, const std::string& module,
                                        const std::string& text);
