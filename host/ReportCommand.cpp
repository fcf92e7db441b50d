#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/FileContent.h"
#include "host/RunFiles.h"
#include "host/Screen.h"
#include "workbench/report/BudgetFile.h"
#include "workbench/report/ComparisonText.h"
#include "workbench/report/ReportDot.h"
#include "workbench/report/ReportHtml.h"
#include "workbench/report/ReportJson.h"
#include "workbench/report/ReportText.h"
#include "workbench/report/ReportTrace.h"
#include "workbench/report/WhatIfText.h"
#include "workbench/timeline/Advice.h"
#include "workbench/timeline/Budget.h"
#include "workbench/timeline/Comparison.h"
#include "workbench/timeline/Prediction.h"
#include "workbench/timeline/Timeline.h"
#include "workbench/timeline/WhatIf.h"

namespace {

void AddOptions(CLI::App& command, Options& options) {
  ReportOptions& report = options.report;
  AddRunsOptions(command, options, report.runs);

  const std::string shown = "What it shows";
  command.add_option("--format", report.format, "text, json, html, trace or dot (default: text)")
      ->type_name("FORMAT")
      ->check(OneOf({"text", "json", "html", "trace", "dot"}))
      ->group(shown);
  command.add_option("--output", report.output, "Write the report to this file")
      ->type_name("FILE")
      ->check(Path())
      ->group(shown);
  AddColorOption(command, options, shown);
  CLI::Option* const focus =
      command
          .add_option("--focus", report.focus, "Of the graph (dot) only what is near this plugin")
          ->type_name("PLUGIN")
          ->group(shown);
  command
      .add_option("--depth", report.depth,
                  "So many dependencies from it, in both\ndirections (default: 2)")
      ->type_name("N")
      ->check(Between(0, 1000000))
      ->needs(focus)
      ->group(shown);

  const std::string predicted = "What it would have taken";
  command
      .add_option("--what-if", report.whatIf,
                  "With this change, or all of several: workers=4,\npoll=0, PLUGIN=MS, PLUGIN=50%, "
                  "'cut A->B' (A no\nlonger depends on B), 'add A->B'")
      ->type_name("CHANGE")
      ->group(predicted);
  command.add_flag("--advise", report.advise, "By which single changes most would be gained")
      ->group(predicted);

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

std::optional<Comparison> CompareWith(const std::vector<std::string>& against,
                                      const LogOptions& logs, const Timeline& timeline) {
  if (against.empty()) return std::nullopt;
  std::vector<Timeline> before;
  for (RecordedRun& run : ReadRunFiles(against, logs)) {
    before.push_back(MakeTimeline(std::move(run)));
  }
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

ReportStyle StyleOf(const Options& options, const Output& output) {
  const bool onTerminal = options.report.output.empty() && output.IsTerminal();
  ReportStyle style;
  style.color = WantsColor(options.color, onTerminal);
  if (onTerminal) style.columns = static_cast<std::size_t>(output.Columns());
  return style;
}

std::string PredictionText(const Timeline& timeline, const std::vector<std::string>& changes,
                           const ReportStyle& style) {
  ParsedWhatIf parsed = ParseWhatIf(changes, timeline);
  if (!parsed.error.empty()) throw UsageError("--what-if: " + parsed.error);
  return WhatIfText(timeline, Predict(timeline, ModeOf(timeline), std::move(parsed.changes)),
                    style);
}

/// What was asked for beside the run itself; empty when nothing was.
std::string AdditionsText(const Timeline& timeline, const ReportAdditions& additions,
                          const Options& options, const ReportStyle& style) {
  const ReportOptions& report = options.report;
  const std::int64_t resolution = timeline.run.resolution;
  std::string text;
  if (additions.comparison) text += ComparisonText(*additions.comparison, resolution);
  if (additions.budget) text += BudgetText(*additions.budget, resolution);
  if (!report.whatIf.empty()) text += PredictionText(timeline, report.whatIf, style);
  if (report.advise) text += AdviceText(timeline, Advise(timeline, ModeOf(timeline)), style);
  return text;
}

std::string GraphText(const Timeline& timeline, const ReportOptions& report) {
  DotOptions graph;
  graph.depth = report.depth;
  if (!report.focus.empty()) graph.focus = report.focus;
  const std::string fault = graph.focus ? FocusFault(timeline, *graph.focus) : std::string();
  if (!fault.empty()) throw UsageError("--focus: " + fault);
  return ReportDot(timeline, graph);
}

std::string TextOf(const Timeline& timeline, const ReportAdditions& additions,
                   const Options& options, const Output& output) {
  const std::string& format = options.report.format;
  if (format == "json") return ReportJson(timeline, additions);
  if (format == "html") return ReportHtml(timeline);
  if (format == "trace") return ReportTrace(timeline);
  if (format == "dot") return GraphText(timeline, options.report);
  const ReportStyle style = StyleOf(options, output);
  const std::string text = AdditionsText(timeline, additions, options, style);
  return text.empty() ? ReportText(timeline, style) : text;
}

bool IsExceeded(const std::optional<std::vector<BudgetResult>>& budget) {
  return budget && std::any_of(budget->begin(), budget->end(),
                               [](const BudgetResult& result) { return result.exceeded; });
}

/// Refuses what the format does not show, rather than to leave it out.
void CheckFormat(const ReportOptions& report) {
  const bool text = report.format == "text";
  const bool compares = text || report.format == "json";
  const std::pair<bool, const char*> unshown[] = {
      {!compares && !report.against.empty(), "--against"},
      {!compares && !report.budget.empty(), "--budget"},
      {!text && !report.whatIf.empty(), "--what-if"},
      {!text && report.advise, "--advise"},
      {report.format != "dot" && !report.focus.empty(), "--focus"}};
  for (const auto& [isUnshown, option] : unshown) {
    if (isUnshown) throw UsageError(option + (" is not for --format " + report.format));
  }
}

ExitStatus Report(const Options& options, HostContext& context) {
  const ReportOptions& report = options.report;
  CheckFormat(report);
  std::vector<std::string> files = report.runs.files;
  files.insert(files.end(), report.against.begin(), report.against.end());
  const LogOptions logs = LogOptionsOf(files, report.runs, options, context);
  const Timeline timeline = MakeTimeline(ReadRun(report.runs, options, logs));
  const ReportAdditions additions{CompareWith(report.against, logs, timeline),
                                  CompareWithBudgetIn(report.budget, timeline)};
  const std::string text = TextOf(timeline, additions, options, context.output);
  if (report.output.empty()) {
    WriteOutput(context, text);
  } else {
    WriteFileText("--output", report.output, text);
  }
  return IsExceeded(additions.budget) ? kFindings : kOk;
}

}  // namespace

Command ReportCommand() {
  return {"report", "Show where the time of a recorded run went", &AddOptions, &Report};
}
