#include "workbench/record/FrameLog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

using Kind = FrameEvent::Kind;
using Field = FrameLogRow::Field;
using Level = FrameLogRow::Level;

constexpr int kFailureLevel = 5;
constexpr int kFatalLevel = 6;

constexpr char kFrame[] = "platform.PluginFrame";
constexpr char kLpc[] = "platform.LPCIntegrate";

constexpr Level kAny = Level::kAny;
constexpr Level kWell = Level::kBelowFailure;
constexpr Level kBadly = Level::kFailure;
constexpr Level kFatal = Level::kFatal;

/// A row of the table below; field names stand in braces in `text`.
struct Pattern {
  Kind kind;
  Level level;
  const char* name;
  const char* module;
  const char* text;
};

#define ROW(kind, level, text) \
  { Kind::kind, level, #kind, kFrame, text }

const Pattern kPatterns[] = {
    ROW(kLoadTaskBegin, kAny, "[Plugin Load]Plugin [{plugin}] SinglePluginLoad Begin."),
    ROW(kLoadBegin, kAny, "[Plugin]start frame plugin Being path= [{path}]"),
    ROW(kLoadSucceeded, kAny, "[Plugin]start frame plugin end success.path= [{path}]"),
    ROW(kLoadFailed, kAny,
        "[Plugin]Get dynamic library handle failed.path= {path},errorcode={number}"),
    ROW(kInitBegin, kAny, "[Plugin Load]Plugin Init begin.[{plugin}]"),
    ROW(kInitSucceeded, kAny, "[Plugin Load]Plugin Init end. [{plugin}] cost time [{ms}]ms"),
    ROW(kInitFailed, kAny, "[Plugin Load]Plugin Init end (failed). [{plugin}] cost time [{ms}]ms."),
    ROW(kInitThrew, kAny, "[Plugin]Init threw [{reason}]"),
    ROW(kInitThrewNoException, kAny, "[Plugin]Init threw something that is no exception object"),
    ROW(kInitMissing, kAny, "[Plugin]Get dynamic library Init symbol failed."),
    ROW(kStartCounted, kWell,
        "[Plugin Load]Plugin [{plugin}] SinglePluginLoad End. count[{number}]."),
    ROW(kStartFailedCounted, kBadly,
        "[Plugin Load]Plugin [{plugin}] SinglePluginLoad End. count[{number}]."),
    ROW(kStartAbandoned, kAny,
        "[Plugin Load]Plugin [{plugin}] SinglePluginLoad End ({reason}). count[{number}]."),
    ROW(kNotLoadedCounted, kAny,
        "[Plugin Load]Plugin {plugin} load failed, InitFailed, count[{number}]."),
    ROW(kLoadSkipped, kAny, "[Plugin Load]Plugin {plugin} not loaded ({reason}), count[{number}]."),

    ROW(kUnloadTaskBegin, kAny, "[Plugin Unload]Plugin [{plugin}] SinglePluginUnload Begin."),
    ROW(kNamelessNotCounted, kAny, "[Plugin Unload]Plugin  instance not found."),
    ROW(kUnInitBegin, kAny, "[Plugin Unload]Plugin UnInit begin.[{plugin}]"),
    ROW(kUnInitEnd, kAny, "[Plugin Unload]Plugin UnInit end. [{plugin}] cost time [{ms}] ms."),
    ROW(kUnInitThrew, kAny, "[Plugin]UnInit threw [{reason}]"),
    ROW(kUnInitThrewNoException, kAny,
        "[Plugin]UnInit threw something that is no exception object"),
    ROW(kUnInitMissing, kAny, "[Plugin]Get dynamic library UnInit symbol failed."),
    ROW(kFreeBegin, kAny, "[Plugin]FreeLibrary Begin"),
    ROW(kFreeEnd, kAny, "[Plugin]FreeLibrary End"),
    ROW(kStopCounted, kWell,
        "[Plugin Unload]Plugin [{plugin}] SinglePluginUnload End. count[{number}]."),
    ROW(kStopRefusedCounted, kBadly,
        "[Plugin Unload]Plugin [{plugin}] SinglePluginUnload End. count[{number}]."),
    ROW(kNothingToStopCounted, kAny,
        "[Plugin Unload]Plugin {plugin} is null, UninitSuccess, count[{number}]."),
    ROW(kUnloadSkipped, kAny,
        "[Plugin Unload]Plugin {plugin} not unloaded ({reason}), count[{number}]."),

    ROW(kPlatformInitialised, kAny, "[Frame_Init]----KPX_Init end, cost time [{ms}]ms.----"),
    ROW(kPlatformInitFailed, kAny, "[Frame_Init]----KPX_Init failed! Quit HUB.exe----"),
    ROW(kManagerInitBegin, kAny, "[Frame_Init]----PluginManager Init begin----"),
    ROW(kManagerInitEnd, kAny, "[Frame_Init]----PluginManager Init end, cost time [{ms}]ms.----"),
    ROW(kManagerInitFailed, kAny, "[Frame_Init]----PluginManager Init failed! Quit HUB.exe----"),
    ROW(kFrameInitEnd, kAny, "[1.Init]----!Frame_Init end.success! cost time [{ms}]ms.----"),
    ROW(kInitRefused, kFatal, "[PluginManager Init]----{reason}----"),
    ROW(kStepThrew, kAny, "the step ended with an exception [{reason}]"),
    ROW(kStepThrewNoException, kAny, "the step ended with an unknown exception"),

    ROW(kRequiredFileUnreadable, kAny, "ReadFile  failed str_xml_path[{path}]"),
    ROW(kRequiredFileUnreadable, kAny, "ReadFile  failed path[{path}]"),
    ROW(kOptionalFileUnreadable, kAny, "ReadFile failed. xml path [{path}]"),
    ROW(kPluginDropped, kAny, "ReadFile plugin[{plugin}] desc path file [{path}] failed."),
    ROW(kTypeUnknown, kAny, "wrror type [{path}]"),
    ROW(kTypeUnknown, kAny, "wrror plugin type [{path}]"),
    ROW(kAddonDropped, kAny, "Addon[{plugin}] parse plugins failed."),
    ROW(kAddonUnreadable, kAny, "parse single addon xml failed. xml path [{path}]"),
    ROW(kAddonIncompatible, kAny,
        "Product[{}] installed addon[{plugin}] is not compatible, support version[{}][{}]."),
    ROW(kToolUnreadable, kAny, "parse single tool xml failed. xml path [{path}]"),
    ROW(kProductVersionMissing, kAny, "Get product version is empty."),

    ROW(kFrameStartBegin, kAny, "[2.Start]----!Frame_Start begin!----"),
    ROW(kPlatformStartBegin, kAny,
        "[Frame_Start]----KPX_Start begin, call KPXStartFinishCallBack begin----"),
    ROW(kPlatformStarted, kAny,
        "[KPXStartFinishCallBack]----KPX_Start end. cost time [{ms}]ms compare 30s."),
    ROW(kFrameStartEnd, kAny, "[2.Start]----!Frame_Start end!----"),
    ROW(kPluginsStartBegin, kAny, "[PluginManager start]Plugins init start..."),
    ROW(kPluginsStartEnd, kAny, "[PluginManager start]Plugins init end. Total cost time [{ms}]ms."),
    ROW(kNoPoolForStart, kAny,
        "[PluginManager start]----PluginManager start failed.Get thread for platform.PluginFrame "
        "failed.----"),
    ROW(kStartCallbackEnd, kAny,
        "[KPXStartFinishCallBack]----HUB exec KPXStartFinishCallBack end----"),

    ROW(kFrameStopBegin, kAny, "[3.Stop]----!Frame_Stop begin!----"),
    ROW(kPlatformPrepareBegin, kAny, "[Frame_Stop]----[{}]KPXPlatform KPX_PreUnInit start----"),
    ROW(kPlatformPrepareEnd, kAny,
        "[Frame_Stop]----[{}]KPXPlatform KPX_PreUnInit end.cost time [{ms}]ms----"),
    {Kind::kLpcStopFailed, kAny, "kLpcStopFailed", kLpc,
     "[PluginManager Uninit]Uninit lpc frame end, failed."},
    ROW(kNoPoolForStop, kAny, "[PluginManager Uninit]Get threads for uninit plugins end, failed."),
    ROW(kPluginsStopBegin, kAny, "[PluginManager Uninit]Uninit all plugins start."),
    ROW(kPluginsStopEnd, kAny, "[PluginManager Uninit]]Uninit all plugins end.cost time [{ms}]ms."),
    ROW(kPlatformStopBegin, kAny, "[Frame_Stop]----[{}]KPXPlatform KPX_Stop start----"),
    ROW(kPlatformStopEnd, kAny,
        "[Frame_Stop]----[{}]KPXPlatform KPX_Stop end.cost time [{ms}]ms----"),
    ROW(kFrameStopEnd, kAny, "[3.Stop]----!Frame_Stop end! cost time [{ms}]ms.----"),

    ROW(kFrameUnInitBegin, kAny, "[4.Uninit]----!Frame_UnInit begin!----"),
    ROW(kFrameUnInitEnd, kAny, "[4.Uninit]----!Frame_UnInit end! cost time [{ms}]ms----")};

#undef ROW

Field FieldOf(const std::string& name) {
  if (name.empty()) return Field::kPassedOver;
  if (name == "plugin") return Field::kPlugin;
  if (name == "path") return Field::kPath;
  if (name == "reason") return Field::kReason;
  if (name == "ms") return Field::kMilliseconds;
  if (name == "number") return Field::kNumber;
  throw std::logic_error("no field is named " + name);
}

FrameLogRow MakeRow(const Pattern& pattern) {
  FrameLogRow row{pattern.kind, pattern.name, pattern.module, pattern.level, {}, {}};
  std::string rest = pattern.text;
  for (std::size_t open = rest.find('{'); open != std::string::npos; open = rest.find('{')) {
    const std::size_t close = rest.find('}', open);
    row.texts.push_back(rest.substr(0, open));
    row.fields.push_back(FieldOf(rest.substr(open + 1, close - open - 1)));
    rest.erase(0, close + 1);
  }
  row.texts.push_back(rest);
  return row;
}

/// The part of a line between its function and its source file.
std::string_view Body(std::string_view text) {
  const std::size_t begin = text.find(']');
  const std::size_t end = text.rfind('[');
  if (begin == std::string_view::npos || end == std::string_view::npos || end <= begin) return {};
  return text.substr(begin + 1, end - begin - 1);
}

bool Matches(Level wanted, int level) {
  switch (wanted) {
    case Level::kBelowFailure:
      return level < kFailureLevel;
    case Level::kFailure:
      return level >= kFailureLevel;
    case Level::kFatal:
      return level >= kFatalLevel;
    default:
      return true;
  }
}

bool ReadNumber(std::string_view text, std::int64_t& number) {
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

bool Fill(FrameEvent& event, Field field, std::string_view text) {
  switch (field) {
    case Field::kPlugin:
      event.plugin = text;
      return true;
    case Field::kPath:
      event.path = text;
      return true;
    case Field::kReason:
      event.reason = text;
      return true;
    case Field::kMilliseconds:
      return ReadNumber(text, event.milliseconds);
    case Field::kNumber:
      return ReadNumber(text, event.number);
    default:
      return true;
  }
}

std::optional<FrameEvent> MatchBody(const FrameLogRow& row, std::string_view body) {
  const std::string& before = row.texts.front();
  if (body.compare(0, before.size(), before) != 0) return std::nullopt;
  FrameEvent event;
  event.kind = row.kind;
  if (row.fields.empty()) {
    return body == before ? std::optional<FrameEvent>(std::move(event)) : std::nullopt;
  }
  std::string_view rest = body.substr(before.size());
  const std::string& behind = row.texts.back();
  if (rest.size() < behind.size() || rest.substr(rest.size() - behind.size()) != behind) {
    return std::nullopt;
  }
  rest.remove_suffix(behind.size());
  for (std::size_t i = row.fields.size(); i-- > 1;) {
    const std::string& between = row.texts[i];
    const std::size_t place = rest.rfind(between);
    if (place == std::string_view::npos) return std::nullopt;
    if (!Fill(event, row.fields[i], rest.substr(place + between.size()))) return std::nullopt;
    rest = rest.substr(0, place);
  }
  if (!Fill(event, row.fields.front(), rest)) return std::nullopt;
  return event;
}

/// The kind of a row's event when the line's level is not known.
Kind WithoutLevel(Kind kind) {
  switch (kind) {
    case Kind::kStartCounted:
    case Kind::kStartFailedCounted:
      return Kind::kStartCountedSomehow;
    case Kind::kStopCounted:
    case Kind::kStopRefusedCounted:
      return Kind::kStopCountedSomehow;
    default:
      return kind;
  }
}

/// The bytes with which the rows' texts begin.
const std::array<bool, 256>& FirstBytes() {
  static const std::array<bool, 256> bytes = [] {
    std::array<bool, 256> all{};
    for (const FrameLogRow& row : FrameLogRows()) {
      all[static_cast<unsigned char>(row.texts.front().front())] = true;
    }
    return all;
  }();
  return bytes;
}

bool BeginsARow(std::string_view body) {
  const auto& rows = FrameLogRows();
  return std::any_of(rows.begin(), rows.end(), [&](const FrameLogRow& row) {
    return body.compare(0, row.texts.front().size(), row.texts.front()) == 0;
  });
}

std::optional<FrameEvent> MatchWithoutLevel(std::string_view body) {
  for (const FrameLogRow& row : FrameLogRows()) {
    if (row.level == Level::kFatal) continue;
    std::optional<FrameEvent> event = MatchBody(row, body);
    if (!event) continue;
    event->kind = WithoutLevel(event->kind);
    return event;
  }
  return std::nullopt;
}

}  // namespace

const std::vector<FrameLogRow>& FrameLogRows() {
  static const std::vector<FrameLogRow>& rows = *[] {
    auto* all = new std::vector<FrameLogRow>;  // never destroyed: threads may log to the end
    for (const Pattern& pattern : kPatterns) all->push_back(MakeRow(pattern));
    return all;
  }();
  return rows;
}

std::optional<FrameEvent> MatchFrameLog(const FrameLogRow& row, int level,
                                        const std::string& module, const std::string& text) {
  if (module != row.module || !Matches(row.level, level)) return std::nullopt;
  return MatchBody(row, Body(text));
}

std::optional<FrameEvent> ParseFrameLog(int level, const std::string& module,
                                        const std::string& text) {
  if (module != kFrame && module != kLpc) return std::nullopt;
  const std::string_view body = Body(text);
  for (const FrameLogRow& row : FrameLogRows()) {
    if (body.compare(0, row.texts.front().size(), row.texts.front()) != 0) continue;
    if (module != row.module || !Matches(row.level, level)) continue;
    if (std::optional<FrameEvent> event = MatchBody(row, body)) return event;
  }
  return std::nullopt;
}

std::optional<FoundFrameLog> FindFrameLog(std::string_view line) {
  constexpr int kMostTries = 4;  // a line that repeats a row's text takes no quadratic time
  const std::array<bool, 256>& firstBytes = FirstBytes();
  const std::size_t open = line.find('[');
  const std::size_t last = line.rfind(']');
  if (open == std::string_view::npos || last == std::string_view::npos) return std::nullopt;
  const std::size_t source = line.rfind('[', last);
  int tries = 0;
  for (std::size_t close = line.find(']', open); close < source && tries < kMostTries;
       close = line.find(']', close + 1)) {
    if (!firstBytes[static_cast<unsigned char>(line[close + 1])]) continue;
    const std::string_view body = line.substr(close + 1, source - close - 1);
    if (!BeginsARow(body)) continue;
    if (auto event = MatchWithoutLevel(body)) {
      return FoundFrameLog{line.rfind('[', close), std::move(*event)};
    }
    ++tries;
  }
  return std::nullopt;
}
