#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "workbench/output/Severity.h"

/// How many plugins a run had, and how many of them were started, failed, were stopped...
struct RunTotals {
  std::int64_t plugins = 0;  // that the frame starts: without executables and drivers
  std::int64_t started = 0;
  std::int64_t initFailed = 0;
  std::int64_t notLoaded = 0;
  std::int64_t stopped = 0;
  std::int64_t stopRefused = 0;

  bool operator==(const RunTotals& other) const;
};

/// One event in a run of a product: a line of its flight record.
///
/// The comment at each kind names the members that it sets in addition to time and thread;
/// docs/record.md names the members of its line.
struct RunEvent {
  enum class Kind {
    kPhaseBegin,   // phase
    kPhaseEnd,     // phase; milliseconds where the frame measured them
    kReady,        // phase (start or stop), plugin: it waits for no other plugin any more. text:
                   // the last plugin that it waited for; empty for none
    kPosted,       // task: it was posted to a pool. The next event on the thread of its kTaskBegin
                   // names its plugin
    kTaskBegin,    // task
    kLoadBegin,    // plugin, task; task 0: not known
    kLoadEnd,      // plugin, result (kOk, kFailed); text: why it failed
    kInitBegin,    // plugin
    kInitEnd,      // plugin, result (kOk, kFailed), milliseconds; text: why it failed
    kUnInitBegin,  // plugin
    kUnInitEnd,    // plugin, result (kOk, kRefused), milliseconds; text: why it was refused
    kCounted,      // phase (start or stop), plugin, number: the count; result: how the phase ended
                   // for it (start: kOk, kFailed, kNotLoaded; stop: kOk, kRefused, kNotLoaded);
                   // text: why it failed, where no earlier event says so
    kTaskEnd,      // task
    kUp,           // every plugin has been counted; milliseconds since Frame_Start
    kStopRequest,  // text: who or what asked
    kFinding,      // severity, text: a problem that was reported to the user
    kCrash,        // plugin (empty: none), phase (empty: none), text: the sentence; number, not in
                   // the record: the exit status, -1 where a signal ends the process
    kEnd           // status, number: the exit status, totals, text: the sentence
  };
  /// kNone, where an event has a result: a log does not say it.
  enum class Result { kNone, kOk, kFailed, kNotLoaded, kRefused };

  Kind kind = Kind::kEnd;
  std::int64_t nanoseconds = 0;  // of the steady clock
  std::uint64_t thread = 0;      // the system's number
  std::string phase;             // one of RunPhase
  std::string plugin;
  std::uint64_t task = 0;
  std::int64_t milliseconds = -1;
  std::int64_t number = -1;
  Result result = Result::kNone;
  Severity severity = Severity::kNote;
  std::string status;
  RunTotals totals;
  std::string text;
};

/// The names of a run's phases in the record.
namespace RunPhase {
constexpr char kFrameInit[] = "frame-init";
constexpr char kPlatformStart[] = "platform-start";
constexpr char kStart[] = "start";  // of the plugins
constexpr char kStop[] = "stop";    // of the plugins
constexpr char kPlatformStop[] = "platform-stop";
constexpr char kFrameStop[] = "frame-stop";  // all of Frame_Stop
constexpr char kFrameUnInit[] = "frame-uninit";
}  // namespace RunPhase

/// What the model says about a plugin.
struct PluginHead {
  std::string id;
  std::string kind;  // "server", "platform", "driver" or "executable"
  std::string version;
  std::string library;                 // full path of the library or executable
  std::int64_t librarySize = -1;       // -1: the file does not exist
  std::vector<std::string> dependsOn;  // plugins of the same model that its start waits for
};

/// The first line of a flight record.
struct RunHead {
  static constexpr int kSchema = 1;
  static constexpr char kFullSleep[] = "full";    // each sleep lasts its whole time
  static constexpr char kEarlySleep[] = "early";  // it ends when a task of the pool has ended

  std::string run;               // unique
  std::string time;              // UTC, as 2026-11-21T18:46:59.123Z
  std::string zone;              // the local time zone's offset, as +01:00
  std::int64_t nanoseconds = 0;  // of the steady clock at `time`
  std::int64_t pid = 0;
  std::string host;
  std::string hubVersion;
  std::string frameVersion;
  std::string platformVersion;
  std::vector<std::string> commandLine;
  std::string product;  // name in Product.xml; empty when that cannot be read
  std::string productVersion;
  std::string path;  // the folder that holds META_INFO and the libraries
  int cores = 0;
  std::string sleep = kFullSleep;  // of the frame between two looks for ready plugins
};
