#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// Where log lines go. A line is "YYYY-MM-DD hh:mm:ss.mmm+hh:mm [LEVEL] [THREAD] [MODULE] TEXT":
/// local time with its offset from UTC, the system's number of the thread that logs, and control
/// bytes of module and text as \xNN.
struct LogConfig {
  int consoleLevel = 4;  // lines from this level up go to standard error; 0: none
  std::string file;      // lines are appended here at once; empty: nowhere
  // A file that is full is put aside: log.txt becomes log.1.txt, which becomes log.2.txt, and so
  // on. While the system refuses that, the file grows on; the next attempt comes when it has grown
  // by as much again.
  std::size_t maxFileBytes = 64U << 20U;
  std::size_t maxFiles = 8;  // put aside at most; the oldest is lost
  int fileLevel = 0;         // lines from this level up go to the file; 0: all
};

/// Sends later lines where `config` says. Throws std::runtime_error, with a sentence that names the
/// file, when it cannot be written; lines then go on as before. Any thread.
void ConfigureLog(const LogConfig& config);

/// How many lines the process could not write to its log files, on a full disk for example. Before
/// the first line that can be written again the file gets one of module "base.log" with the number
/// of lines missing there. Any thread.
std::uint64_t LostLogLines();

/// Called with every line, on the thread that logs it, several at once; the texts are as they were
/// logged. Must neither log nor set an observer.
using LogObserver =
    std::function<void(int level, const std::string& module, const std::string& text)>;

/// Sets the observer, or none when empty. The one before is not called any more after the return.
void SetLogObserver(LogObserver observer);
