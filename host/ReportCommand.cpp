#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/LastRecord.h"
#include "host/Screen.h"
#include "reference/os/LocalText.h"
#include "workbench/report/BudgetFile.h"
#include "workbench/report/ComparisonText.h"
#include "workbench/report/ReportJson.h"
#include "workbench/report/ReportText.h"
#include "workbench/timeline/Budget.h"
#include "workbench/timeline/Comparison.h"
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

  const std::string compared = "What it is compared with";
  command
      .add_option(
          "--against", report.against,
          "Show what differs from these earlier runs; with\nseveral, times within their range "
          "are no change")
      ->type_name("RECORD")
      ->check(Path())
      ->group(compared);
  command
      .add_option("--budget", report.budget,
                  "Exit with 1 when the run took longer than this\nfile of times in ms allows")
      ->type_name("FILE")
      ->check(Path())
      ->group(compared);
}

Timeline ReadTimeline(const fs::path& file) {
  try {
    return MakeTimeline(ReadRecordedRun(file));
  } catch (const std::runtime_error& error) {
    throw UsageError(error.what());
  }
}

std::optional<Comparison> CompareWith(const std::vector<std::string>& against,
                                      const Timeline& timeline) {
  if (against.empty()) return std::nullopt;
  std::vector<Timeline> before;
  for (const std::string& file : against) before.push_back(ReadTimeline(PathFromLocal(file)));
  return Compare(timeline, before);
}

std::optional<std::vector<BudgetResult>> CompareWithBudgetIn(const std::string& file,
                                                             const Timeline& timeline) {
  if (file.empty()) return std::nullopt;
  const std::string text = ReadFileText("--budget", file);
  try {
    return CompareWithBudget(timeline, ReadBudget(text));
  } catch (const std::runtime_error& error) {
    throw UsageError("--budget: " + file + ": " + error.what());
  }
}

/// A comparison alone when one is asked for, otherwise the run.
std::string TextOf(const Timeline& timeline, const ReportAdditions& additions,
                   const Options& options, const Output& output) {
  if (options.report.format == "json") return ReportJson(timeline, additions);
  const std::int64_t resolution = timeline.run.resolution;
  std::string text;
  if (additions.comparison) text += ComparisonText(*additions.comparison, resolution);
  if (additions.budget) text += BudgetText(*additions.budget, resolution);
  if (!text.empty()) return text;
  const bool onTerminal = options.report.output.empty() && output.IsTerminal();
  ReportStyle style;
  style.color = WantsColor(options.color, onTerminal);
  if (onTerminal) style.columns = static_cast<std::size_t>(output.Columns());
  return ReportText(timeline, style);
}

bool IsExceeded(const std::optional<std::vector<BudgetResult>>& budget) {
  return budget && std::any_of(budget->begin(), budget->end(),
                               [](const BudgetResult& result) { return result.exceeded; });
}

ExitStatus Report(const Options& options, HostContext& context) {
  const ReportOptions& report = options.report;
  const Timeline timeline = ReadTimeline(report.runs.empty() ? LastRecord(options.bin)
                                                             : PathFromLocal(report.runs.front()));
  const ReportAdditions additions{CompareWith(report.against, timeline),
                                  CompareWithBudgetIn(report.budget, timeline)};
  const std::string text = TextOf(timeline, additions, options, context.output);
  if (report.output.empty()) {
    context.output.Write(text);
  } else {
    WriteFileText("--output", report.output, text);
  }
  return IsExceeded(additions.budget) ? kFindings : kOk;
}

}  // namespace

Command ReportCommand() {
  return {"report", "Show where the time of a recorded run went", &AddOptions, &Report};
}
