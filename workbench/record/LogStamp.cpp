#include "workbench/record/LogStamp.h"

// Names of months and days in English, whatever the process's locale is.
#define ONLY_C_LOCALE 1
#include <date/date.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <initializer_list>
#include <istream>
#include <sstream>
#include <streambuf>

namespace {

using std::chrono::minutes;
using std::chrono::nanoseconds;

/// The forms that are read without being named. Of day and month as numbers only those in which
/// their order is the only one in use.
constexpr const char* kKnown[] = {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S", "%Y/%m/%d %H:%M:%S",
                                  "%d.%m.%Y %H:%M:%S", "%Y%m%d %H:%M:%S",   "%Y%m%dT%H%M%S",
                                  "%d/%b/%Y:%H:%M:%S", "%d %b %Y %H:%M:%S", "%b %d %H:%M:%S",
                                  "%H:%M:%S"};

constexpr std::size_t kLongest = 80;      // a stamp, in bytes
constexpr std::size_t kMostPlaces = 200;  // where one may begin in a line
constexpr minutes kNoOffset{1'000'000};
constexpr int kYearOfNone = 2000;  // a leap year: 29 February exists

/// Reads from a text that it does not own.
class TextBuffer : public std::streambuf {
 public:
  explicit TextBuffer(std::string& text) {
    setg(text.data(), text.data(), text.data() + text.size());
  }
  std::size_t Consumed() const { return static_cast<std::size_t>(gptr() - eback()); }
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Writes the fraction of the seconds with a dot, which some programs write with a comma, or like
/// the seconds with a colon.
void PutDotBeforeFraction(std::string& text) {
  for (std::size_t i = 0; i + 6 < text.size(); ++i) {
    const char* at = &text[i];
    const bool isTime = IsDigit(at[0]) && IsDigit(at[1]) && at[2] == ':' && IsDigit(at[3]) &&
                        IsDigit(at[4]) && (at[5] == ',' || at[5] == ':') && IsDigit(at[6]);
    const bool isSecond = i >= 3 && at[-1] == ':' && (i == 3 || !IsDigit(at[-4]));
    const bool isFraction = isTime && (at[5] == ',' || isSecond);
    if (!isFraction) continue;
    text[i + 5] = '.';
    return;
  }
}

/// How many digits the fraction of the second has: those behind the last dot, if they are
/// `fraction` nanoseconds and the dot does not separate other numbers.
int FractionDigits(const std::string& text, std::int64_t fraction) {
  const std::size_t dot = text.rfind('.');
  if (dot == std::string::npos) return 0;
  const bool behindSeconds = dot >= 3 && text[dot - 3] == ':';
  if (!behindSeconds && fraction == 0) return 0;
  int digits = 0;
  std::int64_t unit = std::chrono::nanoseconds(std::chrono::seconds(1)).count();
  std::int64_t value = 0;
  for (std::size_t i = dot + 1; i < text.size() && IsDigit(text[i]) && unit > 1; ++i) {
    unit /= 10;
    value += (text[i] - '0') * unit;
    ++digits;
  }
  return value == fraction ? digits : 0;
}

/// Whether a year that the format does not have must be added to it.
bool HasYear(const std::string& format) {
  const auto fields = {"%Y", "%y", "%F",  "%D",  "%C",  "%c",  "%x",
                       "%G", "%g", "%EY", "%Ey", "%Oy", "%Ec", "%Ex"};
  return std::any_of(fields.begin(), fields.end(),
                     [&](const char* field) { return format.find(field) != std::string::npos; });
}

struct Fields {
  date::fields<nanoseconds> fields;
  minutes offset = kNoOffset;
  std::size_t size = 0;
};

/// `text` is read by `format`; none when it does not begin with such a stamp.
std::optional<Fields> Parse(std::string text, const std::string& format) {
  if (text.empty()) return std::nullopt;
  TextBuffer buffer(text);
  std::istream stream(&buffer);
  Fields read;
  std::string zone;
  date::from_stream(stream, format.c_str(), read.fields, &zone, &read.offset);
  if (stream.fail() || !read.fields.has_tod) return std::nullopt;
  read.size = buffer.Consumed();
  if (zone == "Z" || zone == "UTC" || zone == "GMT") read.offset = minutes(0);
  return read;
}

std::optional<LogStamp> StampOf(const Fields& read, const std::string& text) {
  LogStamp stamp;
  stamp.size = read.size;
  nanoseconds time = read.fields.tod.to_duration();
  stamp.digits =
      FractionDigits(text.substr(0, read.size), (time % std::chrono::seconds(1)).count());
  if (time < nanoseconds(0) || time >= std::chrono::hours(24) + std::chrono::seconds(1)) {
    return std::nullopt;
  }
  const date::year_month_day day = read.fields.ymd;
  if (!day.ok()) {
    stamp.date = LogStamp::Date::kNone;
  } else {
    // So that sums of times fit in 64 bits.
    if (day.year() < date::year(1970) || day.year() > date::year(2100)) return std::nullopt;
    time += date::sys_days(day).time_since_epoch();
  }
  if (read.offset != kNoOffset && std::chrono::abs(read.offset) < std::chrono::hours(24)) {
    stamp.offset = static_cast<int>(read.offset.count());
    time -= read.offset;
  }
  stamp.nanoseconds = time.count();
  return stamp;
}

/// Reads an offset behind a stamp of a known form: Z, +01:00, +0100, with a blank before it or not.
void TakeOffset(Fields& read, const std::string& text) {
  std::size_t place = read.size;
  if (place < text.size() && text[place] == 'Z') {
    read.offset = minutes(0);
    ++read.size;
    return;
  }
  if (place < text.size() && text[place] == ' ') ++place;
  if (place >= text.size() || (text[place] != '+' && text[place] != '-')) return;
  const std::string sign = text.substr(place, 6);
  const bool colon = sign.size() == 6 && sign[3] == ':';
  const std::size_t size = colon ? 6 : 5;
  if (sign.size() < size || !std::all_of(sign.begin() + 1, sign.begin() + 3, IsDigit) ||
      !std::all_of(sign.begin() + static_cast<std::ptrdiff_t>(size) - 2,
                   sign.begin() + static_cast<std::ptrdiff_t>(size), IsDigit)) {
    return;
  }
  std::string clock = "0:0 " + sign.substr(0, size);
  const auto parsed = Parse(clock, colon ? "%H:%M %Ez" : "%H:%M %z");
  if (!parsed) return;
  read.offset = parsed->offset;
  read.size = place + size;
}

/// The stamp at the start of `text`, of a known form.
std::optional<LogStamp> KnownStamp(const std::string& text, const char* format) {
  const bool yearless = !HasYear(format) && IsLetter(format[1]) && format[1] == 'b';
  const std::string year = std::to_string(kYearOfNone) + " ";
  std::optional<Fields> read =
      yearless ? Parse(year + text, std::string("%Y ") + format) : Parse(text, format);
  if (!read) return std::nullopt;
  if (yearless) read->size -= year.size();
  const std::string time = text.substr(0, read->size);
  TakeOffset(*read, text);
  std::optional<LogStamp> stamp = StampOf(*read, time);
  if (stamp && yearless) stamp->date = LogStamp::Date::kWithoutYear;
  return stamp;
}

/// The stamp at the start of `text`, as the user's format has it.
std::optional<LogStamp> NamedStamp(const std::string& text, const std::string& format) {
  std::optional<Fields> read = Parse(text, format);
  if (!read) return std::nullopt;
  const bool monthAndDay = read->fields.ymd.month().ok() && read->fields.ymd.day().ok();
  if (HasYear(format) || !monthAndDay) return StampOf(*read, text);
  read->fields.ymd = date::year(kYearOfNone) / read->fields.ymd.month() / read->fields.ymd.day();
  std::optional<LogStamp> stamp = StampOf(*read, text);
  if (stamp) stamp->date = LogStamp::Date::kWithoutYear;
  return stamp;
}

/// Whether a stamp may begin at `place`: at the start of a word or number.
bool MayBegin(std::string_view text, std::size_t place) {
  const char c = text[place];
  if (!IsDigit(c) && !IsLetter(c)) return false;
  const char before = place == 0 ? ' ' : text[place - 1];
  return !IsDigit(before) && !IsLetter(before) && before != '.' && before != ':' && before != '-';
}

}  // namespace

std::string TimeText(const LogStamp& stamp) {
  using std::chrono::milliseconds;
  const date::sys_time<milliseconds> time(
      date::floor<milliseconds>(nanoseconds(stamp.nanoseconds)));
  if (stamp.date == LogStamp::Date::kNone) return date::format("%H:%M:%S", time);
  if (stamp.date == LogStamp::Date::kWithoutYear) return date::format("%m-%dT%H:%M:%S", time);
  return date::format("%Y-%m-%dT%H:%M:%S", time) + (stamp.offset ? "Z" : "");
}

std::string ZoneText(const LogStamp& stamp) {
  if (!stamp.offset) return {};
  const int size = std::abs(*stamp.offset);
  return (*stamp.offset < 0 ? "-" : "+") + date::format("%H:%M", minutes(size));
}

std::optional<LogStamp> LogStamps::FindAt(std::string_view text, std::size_t begin) {
  if (begin >= text.size()) return std::nullopt;
  std::string part(text.substr(begin, kLongest));
  PutDotBeforeFraction(part);
  std::optional<LogStamp> stamp;
  if (!m_format.empty()) {
    stamp = NamedStamp(part, m_format);
  } else {
    if (m_lastFormat != nullptr) stamp = KnownStamp(part, m_lastFormat);
    for (const char* const* format = std::begin(kKnown); !stamp && format != std::end(kKnown);
         ++format) {
      stamp = KnownStamp(part, *format);
      if (stamp) m_lastFormat = *format;
    }
  }
  if (!stamp) return std::nullopt;
  stamp->begin = begin;
  m_lastBegin = begin;
  return stamp;
}

std::optional<LogStamp> LogStamps::Find(std::string_view text) {
  const std::size_t last = m_lastBegin;
  const bool mayBegin = last < text.size() && (!m_format.empty() || MayBegin(text, last));
  if (mayBegin) {
    if (auto stamp = FindAt(text, last)) return stamp;
  }
  for (std::size_t begin = 0; begin < std::min(text.size(), kMostPlaces); ++begin) {
    if (begin == last || (m_format.empty() && !MayBegin(text, begin))) continue;
    if (auto stamp = FindAt(text, begin)) return stamp;
  }
  return std::nullopt;
}

std::string LogStamps::Problem(const std::string& format) {
  using std::chrono::seconds;
  const date::sys_seconds time = date::sys_days(date::year(2026) / 11 / 23) + seconds(49'328);
  std::ostringstream text;
  date::to_stream(text, format.c_str(), time);
  const std::optional<LogStamp> stamp = NamedStamp(text.str(), format);
  const nanoseconds day = std::chrono::hours(24);
  if (stamp && nanoseconds(stamp->nanoseconds) % day == seconds(49'328)) return {};
  return "\"" + format +
         "\" does not give the time of day to the second; a format is written as for strptime, "
         "such "
         "as %d/%m/%Y %H:%M:%S";
}
