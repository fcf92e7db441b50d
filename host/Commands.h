#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/Output.h"
#include "reference/os/StopSignal.h"

namespace CLI {
class App;
}

/// HUB's exit statuses; docs/hub.md says what each promises.
enum ExitStatus : int {
  kBySignal = -1,  // a crash ends the process; the system sets its exit status
  kOk = 0,
  kFrameFailed = 1,
  kFindings = 1,  // of `check`
  kUsage = 2,
  kDegraded = 3,
  kCutShort = 4  // stopped before all was started, or plugins have not returned from Init or UnInit
};

enum class Color { kAuto, kAlways, kNever };

/// What the command line asks of `check` alone.
struct CheckOptions {
  std::string format = "text";
  std::string output;  // file; empty: standard output
  std::string select;  // rules, as ChooseRules has them
  std::string ignore;
  std::string failOn = "error";
  std::string baseline;       // file of the findings that are accepted
  std::string writeBaseline;  // file to write one to
  std::string against;        // folder of another product's executables, for what changes
  std::string with;           // folder of an addon that is put into the product first
  bool listRules = false;
  std::string explain;  // ID of a rule
};

/// Which recorded run a command reads.
struct RunsOptions {
  std::vector<std::string> files;  // records and logs; none: the record of the last run
  std::size_t run = 0;             // which of the runs in them, from 1; 0: the last
  std::string timeFormat;          // of the stamps in logs; empty: a known form
};

/// What the command line asks of `report` alone.
struct ReportOptions {
  RunsOptions runs;
  std::string format = "text";
  std::string output;                // file; empty: standard output
  std::vector<std::string> against;  // files of earlier runs to compare with
  std::string budget;                // file; empty: none
  std::vector<std::string> whatIf;   // changes, as ParseWhatIf has them
  bool advise = false;
  std::string focus;      // ID of a plugin, for the graph; empty: none
  std::size_t depth = 2;  // dependencies from it
};

/// What the command line asks of `why` alone.
struct WhyOptions {
  std::string plugin;
  std::string other;   // empty: none
  std::string record;  // file; empty: that of the last run
};

/// What the command line asks of `replay` alone.
struct ReplayCommandOptions {
  RunsOptions runs;
  std::string output;               // folder
  std::vector<std::string> faults;  // "storage.server=fail"
  std::string each;                 // a fault for each plugin in turn; empty: none
  std::string work = "wait";
  double speed = 1;
  bool anonymous = false;
};

/// What the command line asks of `shake` alone.
struct ShakeOptions {
  int runs = 20;  // in different orders, without the first run and the experiments
  int seed = 0;   // of the first shuffled order
  std::string format = "text";
  std::string keep;  // folder for the records; empty: they are removed
};

/// How `run` delays the plugins' starts.
struct DelayOptions {
  std::optional<int> shuffle;        // seed of every plugin's delay; none: no such delays
  int shuffleOver = 1000;            // milliseconds within which these delays lie
  std::vector<std::string> plugins;  // as "PLUGIN=MILLISECONDS", instead of the seed's
};

/// What the command line asks for.
struct Options {
  std::string bin;  // used as the executable's folder; empty: the folder of HUB itself
  std::int32_t module = 1;
  int workers = 0;         // maximum number of threads of a pool; 0: as many as are asked for
  bool fullSleep = false;  // the end of a task does not end the frame's sleep

  std::string log;
  int logLevel = 0;
  std::size_t logSize = 64;  // MiB
  std::size_t logFiles = 8;

  bool json = false;
  bool events = false;
  bool all = false;
  Color color = Color::kAuto;

  std::string record;  // file; empty: one in the user's state folder
  bool noRecord = false;
  std::string reportPage;  // file for the report on the run; empty: none
  std::string state;       // folder; empty: the user's state folder

  std::optional<double> seconds;       // how long to run; none: until a stop request
  std::optional<double> startTimeout;  // seconds; none: no limit
  double stopTimeout = 90;             // seconds during which no plugin finishes its stop
  bool untilUp = false;                // stop as soon as it is up

  DelayOptions delays;

  CheckOptions check;
  ReportOptions report;
  WhyOptions why;
  ShakeOptions shake;
  ReplayCommandOptions replay;
};

/// What every command needs; created at the start of main, destroyed at its end.
struct HostContext {
  StopSignal& stop;
  Output& output;
  std::vector<std::string> commandLine;
};

/// The user asked for something that is not possible: HUB ends with kUsage.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One of HUB's commands.
struct Command {
  const char* name;
  const char* summary;
  void (*addOptions)(CLI::App& command, Options& options);
  ExitStatus (*run)(const Options& options, HostContext& context);
};

/// `model`: initialises the frame, prints the models that it passes to the platform as one JSON
/// object, un-initialises the frame.
Command ModelCommand();

/// `check`: finds what is wrong with a product, without loading its plugins.
Command CheckCommand();

/// `report`: shows where the time of a recorded run went.
Command ReportCommand();

/// `replay`: writes a product of stubs that does what a recorded run did, or runs it with a fault
/// in each plugin in turn.
Command ReplayCommand();

/// `shake`: runs the product in many orders and finds dependencies that it does not declare.
Command ShakeCommand();

/// `run`: starts the product, shows its plugins, and stops it on request or after a time.
Command RunCommand();

/// `why`: shows why a plugin started when it did, or before another.
Command WhyCommand();
