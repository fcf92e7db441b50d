#include "workbench/report/page/Summary.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

#include "workbench/output/Severity.h"
#include "workbench/output/Text.h"
#include "workbench/record/RunOutcome.h"
#include "workbench/report/ReportText.h"
#include "workbench/report/Times.h"
#include "workbench/report/page/Bars.h"
#include "workbench/report/page/HtmlText.h"
#include "workbench/timeline/Problems.h"

namespace {

using Result = PluginSpan::Result;

constexpr std::size_t kMostNames = 10;

/// One line of the list of facts; nothing for an empty value.
std::string Fact(const char* name, const std::string& value) {
  if (value.empty()) return value;
  return fmt::format("<div><dt>{}</dt><dd>{}</dd></div>\n", name, HtmlText(value));
}

std::string Outcome(const char* kind, const char* symbol, const std::string& sentence) {
  return fmt::format("<p class=\"outcome {}\"><span aria-hidden=\"true\">{}</span> {}</p>\n", kind,
                     symbol, HtmlText(sentence));
}

std::string EndHtml(const Timeline& timeline) {
  const RunState& state = timeline.state;
  const std::string sentence = HowItEnded(timeline);
  if (!state.Crash() && !state.End()) return Outcome("open", "…", sentence);
  const bool good = !state.Crash() && state.End()->status == "up";
  return Outcome(good ? "good" : "bad", good ? "✔" : "✖", sentence);
}

std::string TotalsText(const RunTotals& totals) {
  std::string text = Count(static_cast<std::size_t>(totals.plugins), "plugin");
  text += fmt::format(": {} started", totals.started);
  if (totals.initFailed > 0) text += fmt::format(", {} with a failed Init", totals.initFailed);
  if (totals.notLoaded > 0) text += fmt::format(", {} not loaded", totals.notLoaded);
  if (totals.stopped > 0) text += fmt::format("; {} stopped", totals.stopped);
  if (totals.stopRefused > 0) text += fmt::format("; {} refused to stop", totals.stopRefused);
  return text;
}

/// What the source of the run does not say, and how exact its times are.
std::string KnownText(const RecordedRun& run) {
  std::string text;
  if (run.source == RecordedRun::Source::kLog) text += "a log";
  if (run.resolution > 1) {
    text += fmt::format("{}times to {:g} ms", text.empty() ? "" : ", ",
                        static_cast<double>(run.resolution) / 1e6);
  }
  if (!run.knowsTasks) text += "; not known: when tasks were posted and begun";
  if (!run.knowsThreads) text += "; not known: which thread ran what";
  if (!run.knowsEdges) text += "; not known: what waits for what (--bin DIR gives it)";
  return text;
}

std::string FactsHtml(const Timeline& timeline) {
  const RunHead& head = timeline.run.record.head;
  std::string html = "<dl class=\"facts\">\n";
  html += Fact("Began", head.time + (head.zone.empty() ? "" : " (local time " + head.zone + ")"));
  html += Fact("Plugins", TotalsText(CountTotals(timeline.state)));
  html +=
      Fact("Machine", head.host.empty()
                          ? ""
                          : fmt::format("{}, {}", head.host,
                                        Count(static_cast<std::size_t>(head.cores), "processor")));
  html += Fact("Process", head.pid == 0 ? "" : std::to_string(head.pid));
  html += Fact("Versions", head.hubVersion.empty()
                               ? ""
                               : fmt::format("HUB {}, frame {}, platform {}", head.hubVersion,
                                             head.frameVersion, head.platformVersion));
  html += Fact("Product folder", head.path);
  html += Fact("Read from", timeline.run.name);
  html += Fact("Source", KnownText(timeline.run));
  if (timeline.run.record.unreadableLines > 0) {
    html += Fact("Unreadable", Count(timeline.run.record.unreadableLines, "line"));
  }
  return html + "</dl>\n";
}

std::string PhasesHtml(const Timeline& timeline) {
  if (timeline.state.Phases().empty()) return std::string();
  std::string html =
      "<details><summary>Phases</summary>\n<table><thead><tr><th scope=\"col\">Phase</th>"
      "<th scope=\"col\" class=\"n\">Begin, ms</th><th scope=\"col\" class=\"n\">Took, ms</th>"
      "</tr></thead>\n<tbody>\n";
  const std::int64_t resolution = timeline.run.resolution;
  for (const RunState::Phase& phase : timeline.state.Phases()) {
    const std::int64_t begin = phase.beginNs - timeline.run.record.head.nanoseconds;
    fmt::format_to(std::back_inserter(html),
                   "<tr><th scope=\"row\">{}</th><td class=\"n\">{}</td><td class=\"n\">{}</td>"
                   "</tr>\n",
                   HtmlText(phase.name), MsText(begin, resolution),
                   phase.endNs < 0 ? "not ended" : MsText(phase.endNs - phase.beginNs, resolution));
  }
  return html + "</tbody></table></details>\n";
}

/// What HUB found, what asked for the stop, and why times or results may be wrong.
std::string FindingsHtml(const Timeline& timeline) {
  const RunState& state = timeline.state;
  std::string html;
  for (const std::string& note : timeline.run.notes) {
    html += "<li class=\"warning\"><b>the log</b>: " + HtmlText(note) + "</li>\n";
  }
  for (const RunEvent& finding : state.Findings()) {
    const char* word = Word(finding.severity);
    fmt::format_to(std::back_inserter(html), "<li class=\"{}\"><b>{}</b>: {}</li>\n", word, word,
                   HtmlText(finding.text));
  }
  for (const RunEvent& request : state.StopRequests()) {
    fmt::format_to(std::back_inserter(html), "<li><b>stop request</b>: {}</li>\n",
                   HtmlText(request.text));
  }
  return html.empty() ? html : "<ul class=\"findings\">\n" + html + "</ul>\n";
}

std::vector<std::string> IDsOf(const PhaseView& view, const std::vector<std::size_t>& plugins) {
  std::vector<std::string> ids;
  ids.reserve(plugins.size());
  for (const std::size_t plugin : plugins) ids.push_back(view.ID(plugin));
  return ids;
}

/// A plugin of which the page says something beside its times. `text` is HTML.
struct PluginNote {
  std::size_t plugin;
  std::string text;
};

std::string NotReturnedText(const PhaseView& view, const NotReturned& plugin) {
  std::string text =
      fmt::format("has not returned: {} for {} ms at the last event", WhereText(plugin.where),
                  view.Ms(view.timeline.last - plugin.since));
  if (!view.timeline.run.knowsEdges) return text + "; who waits for it is not known";
  if (plugin.waiting.empty()) return text;
  return fmt::format("{}; {} for it: {}", text,
                     plugin.waiting.size() == 1
                         ? "1 plugin waits"
                         : fmt::format("{} plugins wait", plugin.waiting.size()),
                     HtmlNames(IDsOf(view, plugin.waiting), kMostNames));
}

/// The plugins that failed in the phase, and those that have not returned from it.
std::vector<PluginNote> FailureNotes(const PhaseView& view) {
  std::vector<PluginNote> notes;
  for (const NotReturned& plugin : FindNotReturned(view.timeline)) {
    const bool ofStart = plugin.where != NotReturned::Where::kUnInit &&
                         plugin.where != NotReturned::Where::kUnmapping;
    if (ofStart == view.IsStart()) notes.push_back({plugin.plugin, NotReturnedText(view, plugin)});
  }
  for (const std::size_t plugin : view.order) {
    const PluginSpan& span = view.phase.spans[plugin];
    const bool failed = span.result == Result::kFailed || span.result == Result::kNotLoaded ||
                        span.result == Result::kRefused;
    if (!failed) continue;
    const std::string& reason = view.Reason(plugin);
    notes.push_back(
        {plugin, WordsOf(view, span).text + (reason.empty() ? "" : ": " + HtmlText(reason))});
  }
  return notes;
}

std::vector<PluginNote> StartedAnywayNotes(const PhaseView& view) {
  std::vector<PluginNote> notes;
  if (!view.IsStart() || !view.timeline.run.knowsEdges) return notes;
  for (const StartedAnyway& plugin : FindStartedAnyway(view.timeline)) {
    notes.push_back({plugin.plugin, "was started although it depends on " +
                                        HtmlNames(IDsOf(view, plugin.failed), kMostNames) +
                                        ", which had failed"});
  }
  return notes;
}

/// Plugins that wait for each other, or for such plugins.
std::vector<PluginNote> NeverBegunNotes(const PhaseView& view) {
  std::vector<PluginNote> notes;
  if (!view.timeline.run.knowsEdges) return notes;
  for (const std::size_t plugin : FindNeverBegun(view.timeline, view.phase)) {
    const std::vector<std::string> others = view.StillWaitsFor(plugin);
    notes.push_back({plugin, others.empty()
                                 ? "never began"
                                 : "never began: it waits for " + HtmlNames(others, kMostNames)});
  }
  return notes;
}

/// A list of notes; a long one is folded.
std::string NoteList(const PhaseView& view, const char* summary,
                     const std::vector<PluginNote>& notes) {
  constexpr std::size_t most = 8;
  if (notes.empty()) return std::string();
  std::string html = "<ul class=\"attention\">\n";
  for (const PluginNote& note : notes) {
    fmt::format_to(std::back_inserter(html),
                   "<li data-r=\"{}\"><a href=\"#{}-{}\"><bdi>{}</bdi></a>: {}</li>\n",
                   WordsOf(view, view.phase.spans[note.plugin]).key, view.Word(), note.plugin,
                   HtmlID(view.ID(note.plugin)), note.text);
  }
  html += "</ul>\n";
  if (notes.size() <= most) return html;
  return fmt::format("<details><summary>{} {}</summary>\n{}</details>\n",
                     Count(notes.size(), "plugin"), summary, html);
}

std::string Term(const char* kind, const char* name, const std::string& ms, const char* meaning) {
  return fmt::format(
      "<div><dt><svg aria-hidden=\"true\"><rect class=\"{}\" width=\"100%\"/></svg>{}</dt>"
      "<dd>{} ms<span>{}</span></dd></div>\n",
      kind, name, ms, meaning);
}

/// "2605.4 ms = ...": the parts add up to the whole as shown.
std::string PartsHtml(const PhaseView& view) {
  const TimeBalance& balance = view.phase.balance;
  const std::int64_t resolution = view.timeline.run.resolution;
  const std::string whole = fmt::format("<p class=\"sum\"><b>{} ms</b> = ", view.Ms(balance.wall));
  const char* path = "work of the plugins that the end waited for";
  if (!view.timeline.run.knowsTasks) {
    const std::vector<std::string> parts =
        MsTexts({balance.path, balance.look + balance.idle}, resolution);
    return fmt::format("{}{} ms critical path + {} ms waiting for looks and threads</p>\n", whole,
                       parts[0], parts[1]) +
           BalanceSvg(view) + "<dl class=\"parts\">\n" +
           Term("path", "critical path", parts[0], path) +
           Term("u", "waiting", parts[1],
                "for the next look or for a thread; the log does not say") +
           "</dl>\n";
  }
  const std::vector<std::string> parts =
      MsTexts({balance.path, balance.look, balance.idle}, resolution);
  return fmt::format("{}{} ms critical path + {} ms waiting for the next look + {} ms idle</p>\n",
                     whole, parts[0], parts[1], parts[2]) +
         BalanceSvg(view) + "<dl class=\"parts\">\n" +
         Term("path", "critical path", parts[0], path) +
         Term("l", "next look", parts[1], "a plugin could begin, the frame had not looked yet") +
         Term("idle", "idle", parts[2], "neither: posting, waiting for a thread") + "</dl>\n";
}

std::string ParallelismText(const TimeBalance& balance) {
  constexpr double least = 0.01;
  const double average = balance.Parallelism();
  if (average > 0 && average < least) return "less than 0.01";
  return fmt::format("{:.2f}", average);
}

}  // namespace

std::string RunSummary(const Timeline& timeline) {
  const RunHead& head = timeline.run.record.head;
  const std::string product = head.product.empty() ? "Product" : head.product;
  return fmt::format("<header>\n<h1><bdi>{}</bdi> {}</h1>\n", HtmlText(product),
                     HtmlText(head.productVersion)) +
         EndHtml(timeline) + FactsHtml(timeline) + FindingsHtml(timeline) + PhasesHtml(timeline) +
         "</header>\n";
}

std::string BalanceHtml(const PhaseView& view) {
  const TimeBalance& balance = view.phase.balance;
  std::string html;
  if (view.timeline.run.knowsEdges) {
    html += PartsHtml(view);
  } else {
    html += fmt::format("<p class=\"sum\"><b>{} ms</b></p>\n", view.Ms(balance.wall));
  }
  fmt::format_to(std::back_inserter(html),
                 "<p>All plugins together worked {} ms: on average {} at the same time.</p>\n",
                 view.Ms(balance.work), ParallelismText(balance));
  if (!view.phase.ended) {
    fmt::format_to(std::back_inserter(html),
                   "<p class=\"outcome open\"><span aria-hidden=\"true\">…</span> The {} had not "
                   "ended: it is shown up to the last event of the run.</p>\n",
                   view.Word());
  }
  return html;
}

std::string AttentionHtml(const PhaseView& view) {
  return NoteList(view, "failed or have not returned", FailureNotes(view)) +
         NoteList(view, "never began", NeverBegunNotes(view)) +
         NoteList(view, "were started although a dependency had failed", StartedAnywayNotes(view));
}
