#include <CLI/CLI.hpp>
#include <limits>
#include <string>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/ShakeSession.h"

namespace {

void AddOptions(CLI::App& command, Options& options) {
  AddProductOptions(command, options);
  ShakeOptions& shake = options.shake;

  const std::string runs = "The runs";
  command
      .add_option("--runs", shake.runs,
                  "Runs in different orders, beside those that\ntell causes apart (default: 20)")
      ->type_name("N")
      ->check(Between(1, 10000))
      ->group(runs);
  command.add_option("--seed", shake.seed, "The first seed of the orders (default: 0)")
      ->type_name("SEED")
      ->check(Between(0, 1'000'000'000))
      ->group(runs);
  AddWorkersOption(command, options, runs);
  command
      .add_option("--start-timeout", options.startTimeout,
                  "Seconds after which a start counts as hung,\nbeside the delays (default: by the "
                  "first run,\nwhich may take 60)")
      ->type_name("S")
      ->check(Seconds())
      ->group(runs);
  command
      .add_option("--seconds", options.seconds,
                  "Begin no run after so many seconds\n(default: 600)")
      ->type_name("S")
      ->check(Seconds())
      ->group(runs);

  const std::string shown = "What it shows";
  command.add_option("--format", shake.format, "text or json (default: text)")
      ->type_name("FORMAT")
      ->check(OneOf({"text", "json"}))
      ->group(shown);
  command
      .add_option("--keep", shake.keep,
                  "Keep the runs' flight records in this folder\n(default: they are removed)")
      ->type_name("DIR")
      ->check(Path())
      ->group(shown);
}

ExitStatus Run(const Options& options, HostContext& context) {
  const ShakeReport report = ShakeSession(options, context).Make();
  WriteOutput(context, options.shake.format == "json" ? ShakeJson(report) : ShakeText(report));
  if (report.HasFindings()) return kFindings;
  return report.stoppedBy.empty() ? kOk : kCutShort;
}

}  // namespace

Command ShakeCommand() {
  return {"shake", "Find dependencies that are not declared, by many starts", &AddOptions, &Run};
}
