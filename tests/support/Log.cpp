#include "tests/support/Log.h"

#include <algorithm>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "sdk/base/log.h"

namespace {

std::mutex g_mutex;  // guards all of these
std::condition_variable g_logged;
std::vector<LogLine> g_lines;
std::vector<std::string> g_course;
std::string g_awaitedLine;
std::function<void()> g_action;

[[gnu::format(printf, 1, 0)]] std::string Format(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text = format;  // kept when an argument cannot be converted
  if (length >= 0) {
    text.resize(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(&text[0], text.size(), format, again);
    text.pop_back();
  }
  va_end(again);
  return text;
}

LogLine Parse(int level, const char* module, const std::string& text) {
  LogLine line;
  line.level = level;
  line.module = module;
  line.whole = text;
  const std::size_t functionEnd = text.find(']');
  const std::size_t sourceBegin = text.rfind('[');
  const std::size_t lineBegin = text.rfind('(');
  if (text.empty() || text[0] != '[' || functionEnd == std::string::npos ||
      sourceBegin <= functionEnd || lineBegin == std::string::npos || lineBegin < sourceBegin) {
    return line;
  }
  line.function = text.substr(1, functionEnd - 1);
  line.text = text.substr(functionEnd + 1, sourceBegin - functionEnd - 1);
  line.file = text.substr(sourceBegin + 1, lineBegin - sourceBegin - 1);
  line.line = std::atoi(text.c_str() + lineBegin + 1);
  return line;
}

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::string ExpectedFile(const std::string& function) {
  const std::pair<const char*, const char*> files[] = {
      {"PluginFrame::CPluginManager::", "..\\..\\src\\PluginFrame\\PluginManager.cpp"},
      {"PluginFrame::CPlugin::", "..\\..\\src\\PluginFrame\\Plugin.cpp"},
      {"PluginFrame::", "..\\..\\src\\PluginFrame\\PluginFrame.cpp"},
      {"TevModelParse::CProductXmlReader::", "..\\..\\src\\private\\ProductModelReaderImpl.cpp"},
      {"TevModelParse::CPluginXmlReader::", "..\\..\\src\\private\\PluginModelReaderImpl.cpp"}};
  for (const auto& file : files) {
    if (StartsWith(function, file.first)) return file.second;
  }
  return "a source file of the frame";
}

std::string BriefOf(const LogLine& line) {
  const std::size_t scope = line.function.rfind("::");
  const std::string name =
      scope == std::string::npos ? line.function : line.function.substr(scope + 2);
  return std::to_string(line.level) + " " + name + ": " + line.text;
}

bool IsOf(const LogLine& line, const std::string& function) {
  const std::string end = "::" + function;
  return line.function == function ||
         (line.function.size() > end.size() &&
          line.function.compare(line.function.size() - end.size(), end.size(), end) == 0);
}

template <typename Wanted>
std::vector<std::string> BriefIf(const std::vector<LogLine>& lines, Wanted wanted) {
  std::vector<std::string> brief;
  for (const LogLine& line : lines) {
    if (wanted(line)) brief.push_back(BriefOf(line));
  }
  return brief;
}

}  // namespace

void IKPXFormatLog(int level, const char* module, const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = Format(format, arguments);
  va_end(arguments);
  std::function<void()> action;
  {
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.push_back(Parse(level, module, text));
    g_course.push_back(BriefOf(g_lines.back()));
    if (g_action && g_course.back() == g_awaitedLine) action.swap(g_action);
  }
  g_logged.notify_all();
  if (action) action();
}

Log& Log::Instance() {
  static Log log;
  return log;
}

void Log::Clear() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_lines.clear();
  g_course.clear();
  g_action = nullptr;
}

void Log::AtLine(const std::string& line, std::function<void()> action) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_awaitedLine = line;
  g_action = std::move(action);
}

bool Log::Await(const std::string& function, std::size_t count,
                std::chrono::milliseconds limit) const {
  std::unique_lock<std::mutex> lock(g_mutex);
  return g_logged.wait_for(lock, limit, [&] {
    const auto lines = std::count_if(g_lines.begin(), g_lines.end(),
                                     [&](const LogLine& line) { return IsOf(line, function); });
    return static_cast<std::size_t>(lines) >= count;
  });
}

bool Log::StaysAt(const std::string& function, std::size_t count) const {
  return Await(function, count) && !Await(function, count + 1, std::chrono::milliseconds(50));
}

std::vector<LogLine> Log::Lines() const {
  const std::lock_guard<std::mutex> lock(g_mutex);
  return g_lines;
}

void Log::AddCall(const std::string& call) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_course.push_back(call);
}

std::vector<std::string> Log::Course() const {
  const std::lock_guard<std::mutex> lock(g_mutex);
  return g_course;
}

std::vector<std::string> Log::Brief() const {
  return BriefIf(Lines(), [](const LogLine&) { return true; });
}

std::vector<std::string> Log::Brief(const std::string& function) const {
  return BriefIf(Lines(), [&](const LogLine& line) { return IsOf(line, function); });
}

std::vector<std::string> Log::BriefFrom(int level) const {
  return BriefIf(Lines(), [level](const LogLine& line) { return line.level >= level; });
}

std::string Log::Faults() const {
  std::string faults;
  for (const LogLine& line : Lines()) {
    const std::string file = ExpectedFile(line.function);
    const bool lpcLine =
        StartsWith(line.text, "[PluginManager Uninit]Uninit lpc frame end, failed");
    const std::string module = lpcLine ? "platform.LPCIntegrate" : "platform.PluginFrame";
    if (line.file != file || line.module != module || line.line <= 0) {
      faults += "want module " + module + " and source " + file + ", got module " + line.module +
                " and line: " + line.whole + "\n";
    }
  }
  return faults;
}
