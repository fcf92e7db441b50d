#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/record/FrameEvent.h"

// Parses the frame's log lines. No other code knows their texts.

/// The pattern of a log line that is an event: its constant texts and the fields between them.
///
/// The pattern covers the part between the function at the line's start and the source file at its
/// end; it begins with the first text and ends with the last one.
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

/// All rows. A line is the event of the first row that it matches. Thread-safe.
const std::vector<FrameLogRow>& FrameLogRows();

/// The event of a log line that matches `row`; none when it does not match.
///
/// Plugin names, paths and reasons may contain any bytes, even texts of the row. The texts are
/// therefore searched from the end of the line: a text between two fields matches where it occurs
/// last.
std::optional<FrameEvent> MatchFrameLog(const FrameLogRow& row, int level,
                                        const std::string& module, const std::string& text);

/// The event of a log line; none when no row matches it. Thread-safe.
std::optional<FrameEvent> ParseFrameLog(int level, const std::string& module,
                                        const std::string& text);

/// A line of the frame in the log of a host that writes lines in a form of its own.
struct FoundFrameLog {
  std::size_t begin = 0;  // of the frame's text in the line: the bracket before the function
  FrameEvent event;
};

/// The event of a line that contains a text of the frame behind whatever its host writes before it;
/// none when it contains none. Thread-safe.
///
/// Neither level nor module are known. Lines that differ only by their level become
/// kStartCountedSomehow and kStopCountedSomehow; a line that only its level makes an event is none.
std::optional<FoundFrameLog> FindFrameLog(std::string_view line);
