#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// The time stamp of a log line.
struct LogStamp {
  enum class Date { kWhole, kWithoutYear, kNone };

  /// Since 1970 in UTC, or in the stamp's own time where it has no offset; without a year as if in
  /// 2000; without a date since midnight.
  std::int64_t nanoseconds = 0;
  Date date = Date::kWhole;
  std::optional<int> offset;  // from UTC, in minutes
  int digits = 0;             // of the fraction of the second
  std::size_t begin = 0;      // in the line
  std::size_t size = 0;
};

/// The stamp's time: as 2026-11-21T18:46:59.123Z where it has an offset, without the Z where it has
/// none, and without what else it does not have. To the millisecond.
std::string TimeText(const LogStamp& stamp);
/// The stamp's offset, as +01:00; empty where it has none.
std::string ZoneText(const LogStamp& stamp);

/// Finds and reads the stamps of a log's lines. Keeps how the last stamp was written and where it
/// began, so that the next one is found at once.
///
/// Not thread-safe.
class LogStamps {
 public:
  /// `format`: how stamps are written, as for strptime, with a fraction behind the seconds where
  /// there is one; empty: as HUB writes them, by ISO 8601, or in another form that has one meaning.
  explicit LogStamps(std::string format) : m_format(std::move(format)) {}

  /// The stamp in `text`, the part of a line before the logged text; none when it has none.
  std::optional<LogStamp> Find(std::string_view text);

  /// What is wrong with a format, as a sentence; empty when it can be used.
  static std::string Problem(const std::string& format);

 private:
  std::optional<LogStamp> FindAt(std::string_view text, std::size_t begin);

  std::string m_format;
  const char* m_lastFormat = nullptr;  // of the known ones
  std::size_t m_lastBegin = 0;
};
