#include <CLI/CLI.hpp>
#include <cmath>
#include <string>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/ProductRun.h"
#include "reference/base/ThreadPools.h"
#include "reference/xrt/SleepWaker.h"

namespace {

/// Accepts a finite number of seconds, zero or more.
CLI::Validator Seconds() {
  return CLI::Validator(
      [](const std::string& text) {
        double seconds = 0;
        const bool good =
            CLI::detail::lexical_cast(text, seconds) && std::isfinite(seconds) && seconds >= 0;
        return good ? std::string() : "\"" + text + "\" is no number of seconds from 0 up";
      },
      std::string());
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
  command
      .add_option(
          "--workers", options.workers,
          "Most threads that start or stop plugins\n(default: as many as there are plugins)")
      ->type_name("N")
      ->check(Between(1, 10000))
      ->group(limits);
  command
      .add_flag("--full-sleep", options.fullSleep,
                "Let the frame sleep 200 ms between two looks\n"
                "for plugins that are ready, as with a\n"
                "runtime that cannot end a sleep early")
      ->group(limits);

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
