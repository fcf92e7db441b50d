#pragma once

#include <cstddef>
#include <functional>
#include <string>

/// Where log lines go.
struct LogConfig {
  int consoleLevel = 4;                   // lines from this level up go to standard error; 0: none
  std::string file;                       // every line is appended here; empty: nowhere
  std::size_t maxFileBytes = 64U << 20U;  // then the file is put aside as FILE.1, and so on
  std::size_t maxFiles = 8;
};

/// Sends later lines where `config` says. Throws std::runtime_error, with a sentence that names the
/// file, when it cannot be written; lines then go on as before. Any thread.
void ConfigureLog(const LogConfig& config);

/// Called with every line, on the thread that logs it; must not log itself.
using LogObserver =
    std::function<void(int level, const std::string& module, const std::string& text)>;

/// Sets the observer, or none when empty. The one before is not called any more after the return.
void SetLogObserver(LogObserver observer);
