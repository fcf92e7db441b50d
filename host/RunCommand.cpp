#include <CLI/CLI.hpp>
#include <limits>
#include <string>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/ProductRun.h"
#include "host/StartDelays.h"
#include "reference/base/ThreadPools.h"
#include "reference/xrt/SleepWaker.h"

namespace {

/// Accepts PLUGIN=MILLISECONDS.
CLI::Validator PluginDelay() {
  return CLI::Validator(
      [](const std::string& text) {
        return ParsePluginDelay(text) ? std::string()
                                      : "\"" + text + "\" is no PLUGIN=MS with whole milliseconds";
      },
      std::string());
}

void AddDelayOptions(CLI::App& command, DelayOptions& delays) {
  const std::string order = "The order of the start";
  command
      .add_option("--shuffle", delays.shuffle,
                  "Delay each plugin's start by a time that\nfollows from this number and its ID")
      ->type_name("SEED")
      ->check(Between(0, std::numeric_limits<int>::max()))
      ->group(order);
  command
      .add_option("--shuffle-over", delays.shuffleOver,
                  "Delays of --shuffle lie within so many\nmilliseconds (default: 1000)")
      ->type_name("MS")
      ->check(Between(1, 3'600'000))
      ->group(order);
  command
      .add_option("--delay", delays.plugins,
                  "PLUGIN=MS: begin this plugin's start not before\nso many milliseconds of the "
                  "start; repeatable")
      ->type_name("DELAY")
      ->allow_extra_args(false)
      ->check(PluginDelay())
      ->group(order);
}

void AddOptions(CLI::App& command, Options& options) {
  AddProductOptions(command, options);
  AddLogOptions(command, options);
  const std::string limits = "How long";
  command.add_option("--seconds", options.seconds, "Stop after so many seconds")
      ->type_name("S")
      ->check(Seconds())
      ->group(limits);
  command
      .add_option("--start-timeout", options.startTimeout,
                  "Stop when it is not up after so many\nseconds (default: it may take for ever)")
      ->type_name("S")
      ->check(Seconds())
      ->group(limits);
  command
      .add_option("--stop-timeout", options.stopTimeout,
                  "Leave when no plugin has ended for so\nmany seconds of the stop (default: 90)")
      ->type_name("S")
      ->check(Seconds())
      ->group(limits);
  command.add_flag("--until-up", options.untilUp, "Stop as soon as it is up")->group(limits);
  AddWorkersOption(command, options, limits);
  command
      .add_flag("--full-sleep", options.fullSleep,
                "Let the frame sleep 200 ms between two looks\n"
                "for plugins that are ready, as with a\n"
                "runtime that cannot end a sleep early")
      ->group(limits);
  AddDelayOptions(command, options.delays);

  const std::string shown = "What it shows";
  command.add_flag("--json", options.json, "One JSON object at the end, nothing else")
      ->group(shown);
  command.add_flag("--events", options.events, "A JSON object a line as things happen")
      ->group(shown);
  command.add_flag("--all", options.all, "Every plugin in the table, however many")->group(shown);
  AddColorOption(command, options, shown);

  const std::string kept = "What it keeps";
  command
      .add_option("--record", options.record,
                  "Write the flight record to this file\n"
                  "(default: one in the user's state folder)")
      ->type_name("FILE")
      ->check(Path())
      ->group(kept);
  command.add_flag("--no-record", options.noRecord, "Write no flight record")->group(kept);
  command
      .add_option("--report", options.reportPage,
                  "Write the report on the run, a page for a\nbrowser, to this file")
      ->type_name("FILE")
      ->check(Path())
      ->group(kept);
  command
      .add_option(
          "--state", options.state,
          "Folder of the records, of the lock and of what\nthe next run reads (default: the "
          "user's)")
      ->type_name("DIR")
      ->check(Path())
      ->group(kept);
}

ExitStatus Run(const Options& options, HostContext& context) {
  LimitPoolThreads(options.workers);
  EndSleepsEarly(!options.fullSleep);
  return ProductRun(options, context).Run();
}

}  // namespace

Command RunCommand() {
  return {"run", "Start the product, show its plugins, stop it on Ctrl-C", &AddOptions, &Run};
}
