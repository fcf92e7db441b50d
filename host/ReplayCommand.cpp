#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/ReplayProduct.h"
#include "host/ReplayRuns.h"
#include "host/RunFiles.h"
#include "reference/os/LocalText.h"
#include "workbench/output/Nearest.h"
#include "workbench/output/Text.h"
#include "workbench/replay/ReplayFiles.h"

namespace fs = std::filesystem;

namespace {

/// Accepts a finite number above 0.
CLI::Validator Factor() {
  return CLI::Validator(
      [](const std::string& text) {
        double factor = 0;
        const bool good =
            CLI::detail::lexical_cast(text, factor) && std::isfinite(factor) && factor > 0;
        return good ? std::string() : "\"" + Escaped(text) + "\" is no number above 0";
      },
      std::string());
}

void AddOptions(CLI::App& command, Options& options) {
  ReplayCommandOptions& replay = options.replay;
  AddRunsOptions(command, options, replay.runs);

  const std::string product = "The product of stubs";
  command.add_option("--output", replay.output, "Write it to this folder, new or empty")
      ->type_name("DIR")
      ->check(Path())
      ->group(product);
  command
      .add_option("--fault", replay.faults,
                  "Put a fault into a plugin's Init: ID=fail,\nID=hang, ID=crash or ID=slow:500 "
                  "(ms longer);\n"
                  "repeatable")
      ->type_name("FAULT")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->group(product);
  command.add_option("--speed", replay.speed, "Divide all durations by this (default: 1)")
      ->type_name("N")
      ->check(Factor())
      ->group(product);
  command
      .add_option("--work", replay.work,
                  "wait or busy: whether stubs use the processor\nmeanwhile (default: wait)")
      ->type_name("HOW")
      ->check(OneOf({"wait", "busy"}))
      ->group(product);
  command.add_flag("--anonymous", replay.anonymous, "Replace all names and versions")
      ->group(product);

  command
      .add_option(
          "--each", replay.each,
          "Write none; put this fault into each plugin\nin turn, run that, and print who suffers:\n"
          "fail, hang, crash or slow:500")
      ->type_name("FAULT")
      ->group("What each plugin's fault does");
}

Timeline ReadTimeline(const Options& options, HostContext& context) {
  const RunsOptions& runs = options.replay.runs;
  RecordedRun run = ReadRun(runs, options, LogOptionsOf(runs.files, runs, options, context));
  if (!run.knowsEdges) {
    throw UsageError(run.name +
                     " does not say which plugin waits for which; --bin DIR names the folder of "
                     "its product, which does");
  }
  return MakeTimeline(std::move(run));
}

Fault FaultOf(const char* option, const std::string& text) {
  try {
    return ParseFault(text);
  } catch (const std::invalid_argument& error) {
    throw UsageError(option + (": " + std::string(error.what())));
  }
}

/// Puts a fault such as "storage.server=fail" into its plugin.
void AddNamedFault(Replay& replay, const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos) {
    throw UsageError("--fault: \"" + Escaped(text) + "\" names no fault: " + Escaped(text) +
                     "=fail, =hang, =crash or =slow:500");
  }
  const std::string id = text.substr(0, equals);
  const Fault fault = FaultOf("--fault", text.substr(equals + 1));
  const std::size_t plugin = replay.Find(id);
  const bool isFound = plugin < replay.plugins.size() && replay.plugins[plugin].hasID;
  if (!isFound) {
    std::vector<std::string> ids;
    for (const ReplayPlugin& known : replay.plugins) ids.push_back(known.recordedID);
    throw UsageError("--fault: the run has no plugin \"" + Escaped(id) + "\"" +
                     DidYouMean(id, ids));
  }
  const bool wasLoaded = replay.plugins[plugin].library == ReplayPlugin::Library::kStub;
  AddFault(replay.plugins[plugin], fault);
  replay.differences.push_back("A fault was put into " + replay.plugins[plugin].id + ": " +
                               text.substr(equals + 1) +
                               (wasLoaded ? "." : "; in the recorded run it was not loaded."));
}

/// The options of the recorded run that decide how it goes, for another run.
std::vector<std::string> RunArguments(const RunHead& head) {
  std::vector<std::string> arguments;
  const std::vector<std::string>& words = head.commandLine;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string option = "--workers";
    std::string value;
    if (words[i] == option && i + 1 < words.size()) value = words[i + 1];
    if (words[i].compare(0, option.size() + 1, option + "=") == 0) {
      value = words[i].substr(option.size() + 1);
    }
    const bool isNumber = !value.empty() && value.size() <= 5 &&
                          value.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber) arguments = {option, value};
  }
  if (head.sleep == RunHead::kFullSleep) arguments.emplace_back("--full-sleep");
  return arguments;
}

ExitStatus WriteReplay(const Replay& replay, const Timeline& timeline,
                       const ReplayOptions& replayOptions, const Options& options,
                       HostContext& context) {
  std::string arguments;
  for (const std::string& argument : RunArguments(timeline.run.record.head)) {
    arguments += " " + argument;
  }
  const fs::path folder = PathFromLocal(options.replay.output);
  RequireNewFolder("--output", folder);
  WriteReplayProduct(folder, replay, ReplayDescription(replay, timeline, replayOptions, arguments));
  std::string text;
  for (const std::string& difference : replay.differences) text += difference + "\n";
  text += Count(replay.plugins.size(), "plugin") + " written. It runs by\n    HUB run --bin " +
          LocalFromPath(folder / "bin") + arguments + "\n";
  WriteOutput(context, text);
  return kOk;
}

ExitStatus Run(const Options& options, HostContext& context) {
  const ReplayCommandOptions& asked = options.replay;
  if (asked.output.empty() == asked.each.empty()) {
    throw UsageError(asked.output.empty() ? "--output DIR or --each FAULT is missing"
                                          : "--output and --each: only one of them");
  }
  const ReplayOptions replayOptions{asked.anonymous, asked.speed, asked.work == "busy"};
  std::optional<Fault> fault;
  if (!asked.each.empty()) fault = FaultOf("--each", asked.each);
  const Timeline timeline = ReadTimeline(options, context);
  Replay replay = MakeReplay(timeline, replayOptions);
  if (replay.plugins.empty()) throw UsageError(timeline.run.name + " is of a run without plugins");
  for (const std::string& named : asked.faults) AddNamedFault(replay, named);
  if (!fault) return WriteReplay(replay, timeline, replayOptions, options, context);
  const std::vector<std::string> arguments = RunArguments(timeline.run.record.head);
  return ReplayRuns(std::move(replay), *fault, arguments, context).Run();
}

}  // namespace

Command ReplayCommand() {
  return {"replay", "Make a product of stubs that does what a recorded run did", &AddOptions, &Run};
}
