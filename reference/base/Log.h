#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// The outputs of the log. A line is "YYYY-MM-DD hh:mm:ss.mmm+hh:mm [LEVEL] [THREAD] [MODULE]
/// TEXT": local time with its offset from UTC, the system's number of the thread that logs; control
/// bytes in module and text become \xNN.
struct LogConfig {
  int consoleLevel = 4;  // lines from this level up go to standard error; 0: none
  std::string file;      // lines are appended here without a buffer; empty: no file
  // A full file is renamed: log.txt becomes log.1.txt, which becomes log.2.txt, and so on. If the
  // system refuses to rename it, the file keeps growing; the next attempt follows after another
  // maxFileBytes.
  std::size_t maxFileBytes = 64U << 20U;
  std::size_t maxFiles = 8;  // renamed files that are kept; older ones are removed
  int fileLevel = 0;         // lines from this level up go to the file; 0: all
};

/// Applies `config` to all later lines. Throws std::runtime_error, with a sentence that names the
/// file, when it cannot be written; the former configuration then stays. Thread-safe.
void ConfigureLog(const LogConfig& config);

/// How many lines the process could not write to its log files, on a full disk for example. When
/// lines can be written again, the file first gets a line of module "base.log" with the number of
/// lines that are missing there. Thread-safe.
std::uint64_t LostLogLines();

/// Called with every line, on the thread that logs it, concurrently on several threads. The texts
/// are not escaped. Must neither log nor set an observer.
using LogObserver =
    std::function<void(int level, const std::string& module, const std::string& text)>;

/// Sets the observer; empty: none. After the return the former observer is not called any more.
void SetLogObserver(LogObserver observer);
