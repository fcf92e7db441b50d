#include <CLI/CLI.hpp>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/LastRecord.h"
#include "host/Screen.h"
#include "reference/os/LocalText.h"
#include "workbench/report/ReportJson.h"
#include "workbench/report/ReportText.h"
#include "workbench/timeline/Timeline.h"

namespace fs = std::filesystem;

namespace {

void AddOptions(CLI::App& command, Options& options) {
  ReportOptions& report = options.report;
  const std::string run = "The run";
  command
      .add_option("RECORD", report.runs,
                  "The flight record of the run (default: that of\nthe last run; with --bin of "
                  "that product)")
      ->type_name("")
      ->check(Path())
      ->expected(0, 1)
      ->group(run);
  command.add_option("--bin", options.bin, "Folder of META_INFO and the plugin libraries")
      ->type_name("DIR")
      ->check(Path())
      ->group(run);

  const std::string shown = "What it shows";
  command.add_option("--format", report.format, "text or json (default: text)")
      ->type_name("FORMAT")
      ->check(OneOf({"text", "json"}))
      ->group(shown);
  command.add_option("--output", report.output, "Write the report to this file")
      ->type_name("FILE")
      ->check(Path())
      ->group(shown);
  AddColorOption(command, options, shown);
}

Timeline ReadTimeline(const Options& options) {
  const std::vector<std::string>& runs = options.report.runs;
  const fs::path file = runs.empty() ? LastRecord(options.bin) : PathFromLocal(runs.front());
  try {
    return MakeTimeline(ReadRecordedRun(file));
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

std::string TextOf(const Timeline& timeline, const Options& options, const Output& output) {
  if (options.report.format == "json") return ReportJson(timeline);
  const bool onTerminal = options.report.output.empty() && output.IsTerminal();
  ReportStyle style;
  style.color = WantsColor(options.color, onTerminal);
  if (onTerminal) style.columns = static_cast<std::size_t>(output.Columns());
  return ReportText(timeline, style);
}

ExitStatus Report(const Options& options, HostContext& context) {
  const std::string text = TextOf(ReadTimeline(options), options, context.output);
  if (options.report.output.empty()) {
    context.output.Write(text);
  } else {
    WriteFileText("--output", options.report.output, text);
  }
  return kOk;
}

}  // namespace

Command ReportCommand() {
  return {"report", "Show where the time of a recorded run went", &AddOptions, &Report};
}
