#include "reference/base/Log.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <utility>

#include "reference/base/LogFile.h"
#include "reference/base/LogLine.h"
#include "reference/os/LoaderLog.h"
#include "sdk/base/log.h"

namespace {

/// The outputs of the log.
struct Sinks {
  int consoleLevel = 0;
  spdlog::sink_ptr console;  // null: no lines on standard error
  int fileLevel = 0;
  spdlog::sink_ptr file;  // null: no file
};

/// The state of the log. Never destroyed: threads may log while the process ends.
struct LogState {
  std::mutex sinksMutex;
  std::shared_ptr<const Sinks> sinks;  // guarded by sinksMutex

  std::atomic<std::uint64_t> lostLines{0};

  std::shared_mutex observerMutex;
  LogObserver observer;  // guarded by observerMutex
};

spdlog::sink_ptr WithOurForm(spdlog::sink_ptr sink) {
  sink->set_formatter(std::make_unique<spdlog::pattern_formatter>(
      "%Y-%m-%d %H:%M:%S.%e%z %v", spdlog::pattern_time_type::local,
      "\n"));  // the same bytes on every system
  return sink;
}

std::shared_ptr<const Sinks> MakeSinks(const LogConfig& config,
                                       std::atomic<std::uint64_t>& lostLines) {
  auto sinks = std::make_shared<Sinks>();
  sinks->consoleLevel = config.consoleLevel;
  sinks->fileLevel = config.fileLevel;
  if (config.consoleLevel > 0) {
    sinks->console = WithOurForm(std::make_shared<spdlog::sinks::stderr_sink_mt>());
  }
  if (!config.file.empty()) {
    sinks->file = WithOurForm(std::make_shared<LogFile>(config, lostLines));
  }
  return sinks;
}

LogState& TheLog() {
  static LogState& log = *[] {
    auto* state = new LogState;
    state->sinks = MakeSinks(LogConfig(), state->lostLines);
    return state;
  }();
  return log;
}

[[gnu::format(printf, 1, 0)]] std::string Format(const char* format, std::va_list arguments) {
  if (format == nullptr) return std::string();
  std::va_list again;
  va_copy(again, arguments);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has called va_start
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text = format;  // kept when an argument cannot be converted
  if (length >= 0) {
    text.resize(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(text.data(), text.size(), format, again);
    text.pop_back();
  }
  va_end(again);
  return text;
}

void Write(int level, const std::string& module, const std::string& text) {
  LogState& log = TheLog();
  std::shared_ptr<const Sinks> sinks;
  {
    const std::lock_guard<std::mutex> lock(log.sinksMutex);
    sinks = log.sinks;
  }
  const bool toConsole = sinks->console && level >= sinks->consoleLevel;
  const bool toFile = sinks->file && level >= sinks->fileLevel;
  if (!toConsole && !toFile) return;
  bool isInFileOrCounted = !toFile;
  try {
    const std::string line = LogLine(level, module, text);
    const spdlog::details::log_msg message({}, spdlog::level::info, line);
    if (toFile) sinks->file->log(message);
    isInFileOrCounted = true;
    if (toConsole) sinks->console->log(message);
  } catch (const std::exception&) {  // out of memory, or the console was closed: the observer is
                                     // still called
    if (!isInFileOrCounted) ++log.lostLines;
  }
}

void Observe(int level, const std::string& module, const std::string& text) {
  LogState& log = TheLog();
  const std::shared_lock<std::shared_mutex> lock(log.observerMutex);
  if (log.observer) log.observer(level, module, text);
}

void LogLoaderMessage(const char* text) noexcept {
  IKPXFormatLog(5, "platform.os", "%s", text);
}

/// Sets the loader's log when this library is loaded: the layers below the log cannot call it.
// NOLINTNEXTLINE(cert-err58-cpp): it throws nothing
[[maybe_unused]] const bool g_isLoaderLogSet = (SetLoaderLog(&LogLoaderMessage), true);

}  // namespace

// NOLINTNEXTLINE(cert-dcl50-cpp): the library's interface
void IKPXFormatLog(int level, const char* module, const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  try {
    const std::string moduleText = module;
    const std::string text = Format(format, arguments);
    Write(level, moduleText, text);
    Observe(level, moduleText, text);
  } catch (...) {
    // There is nowhere to report it: the line is lost.
  }
  va_end(arguments);
}

void ConfigureLog(const LogConfig& config) {
  LogState& log = TheLog();
  std::shared_ptr<const Sinks> sinks;
  try {
    sinks = MakeSinks(config, log.lostLines);
  } catch (const std::exception& error) {
    throw std::runtime_error("the log cannot be written to " + config.file + ": " + error.what());
  }
  const std::lock_guard<std::mutex> lock(log.sinksMutex);
  log.sinks = std::move(sinks);
}

std::uint64_t LostLogLines() {
  return TheLog().lostLines;
}

void SetLogObserver(LogObserver observer) {
  LogState& log = TheLog();
  const std::unique_lock<std::shared_mutex> lock(log.observerMutex);
  log.observer = std::move(observer);
}
