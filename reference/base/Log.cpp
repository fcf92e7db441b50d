#include "reference/base/Log.h"

#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>
#include <utility>

#include "reference/os/LoaderLog.h"
#include "sdk/base/log.h"

namespace {

constexpr char kPattern[] = "%Y-%m-%d %H:%M:%S.%e %v";

/// Where lines go. Both loggers write whole lines by themselves.
struct Sinks {
  int consoleLevel = 0;
  std::shared_ptr<spdlog::logger> console;
  std::shared_ptr<spdlog::logger> file;
};

/// The log's whole state. Never destroyed: threads may log while the process ends.
struct LogState {
  std::mutex sinksMutex;
  std::shared_ptr<const Sinks> sinks;  // guarded by sinksMutex

  std::shared_mutex observerMutex;
  LogObserver observer;  // guarded by observerMutex
};

std::shared_ptr<spdlog::logger> MakeLogger(const char* name, spdlog::sink_ptr sink) {
  auto logger = std::make_shared<spdlog::logger>(name, std::move(sink));
  logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
      kPattern, spdlog::pattern_time_type::local, "\n"));  // the same bytes on every system
  logger->set_level(spdlog::level::trace);
  logger->flush_on(spdlog::level::trace);
  logger->set_error_handler([](const std::string&) {});  // a line that cannot be written is lost
  return logger;
}

std::shared_ptr<const Sinks> MakeSinks(const LogConfig& config) {
  auto sinks = std::make_shared<Sinks>();
  sinks->consoleLevel = config.consoleLevel;
  if (config.consoleLevel > 0) {
    sinks->console = MakeLogger("console", std::make_shared<spdlog::sinks::stderr_sink_mt>());
  }
  if (!config.file.empty()) {
    sinks->file = MakeLogger("file", std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
                                         config.file, config.maxFileBytes, config.maxFiles));
  }
  return sinks;
}

LogState& TheLog() {
  static LogState& log = *[] {
    auto* state = new LogState;
    state->sinks = MakeSinks(LogConfig());
    return state;
  }();
  return log;
}

[[gnu::format(printf, 1, 0)]] std::string Format(const char* format, std::va_list arguments) {
  if (format == nullptr) return std::string();
  std::va_list again;
  va_copy(again, arguments);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has begun it
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text = format;  // still tells more than nothing, should an argument be no text
  if (length >= 0) {
    text.resize(static_cast<std::size_t>(length) + 1);
    std::vsnprintf(text.data(), text.size(), format, again);
    text.pop_back();
  }
  va_end(again);
  return text;
}

/// Control bytes as \xNN, so that a name from a file cannot forge a line.
std::string Escaped(const std::string& text) {
  constexpr char digits[] = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      escaped += c;
      continue;
    }
    escaped += "\\x";
    escaped += digits[byte >> 4U];
    escaped += digits[byte & 0xFU];
  }
  return escaped;
}

void Write(int level, const std::string& module, const std::string& text) {
  LogState& log = TheLog();
  std::shared_ptr<const Sinks> sinks;
  {
    const std::lock_guard<std::mutex> lock(log.sinksMutex);
    sinks = log.sinks;
  }
  const bool toConsole = sinks->console && level >= sinks->consoleLevel;
  if (toConsole || sinks->file) {
    const std::string line =
        "[" + std::to_string(level) + "] [" + Escaped(module) + "] " + Escaped(text);
    if (toConsole) sinks->console->log(spdlog::level::info, spdlog::string_view_t(line));
    if (sinks->file) sinks->file->log(spdlog::level::info, spdlog::string_view_t(line));
  }
  const std::shared_lock<std::shared_mutex> lock(log.observerMutex);
  if (log.observer) log.observer(level, module, text);
}

void LogLoaderMessage(const char* text) noexcept {
  IKPXFormatLog(5, "platform.os", "%s", text);
}

/// The loader speaks through this log from the moment that the library is there.
// NOLINTNEXTLINE(cert-err58-cpp): it throws nothing
[[maybe_unused]] const bool g_loaderSpeaks = (SetLoaderLog(&LogLoaderMessage), true);

}  // namespace

// NOLINTNEXTLINE(cert-dcl50-cpp): the library's interface
void IKPXFormatLog(int level, const char* module, const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  try {
    Write(level, module, Format(format, arguments));
  } catch (...) {
    // Nowhere to say it: the line is lost.
  }
  va_end(arguments);
}

void ConfigureLog(const LogConfig& config) {
  std::shared_ptr<const Sinks> sinks;
  try {
    sinks = MakeSinks(config);
  } catch (const spdlog::spdlog_ex& error) {
    throw std::runtime_error("the log cannot be written to " + config.file + ": " + error.what());
  }
  LogState& log = TheLog();
  const std::lock_guard<std::mutex> lock(log.sinksMutex);
  log.sinks = std::move(sinks);
}

void SetLogObserver(LogObserver observer) {
  LogState& log = TheLog();
  const std::unique_lock<std::shared_mutex> lock(log.observerMutex);
  log.observer = std::move(observer);
}
