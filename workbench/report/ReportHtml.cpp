#include "workbench/report/ReportHtml.h"

#include <fmt/format.h>

#include <cstddef>
#include <iterator>

#include "workbench/report/page/Bars.h"
#include "workbench/report/page/HtmlText.h"
#include "workbench/report/page/PageTexts.h"
#include "workbench/report/page/PhaseView.h"
#include "workbench/report/page/Summary.h"
#include "workbench/report/page/Tables.h"

namespace {

std::string TextOf(const PageText& text) {
  std::string whole;
  for (std::size_t i = 0; i < text.count; ++i) whole += text.pieces[i];
  return whole;
}

std::string Head(const Timeline& timeline) {
  const std::string& product = timeline.run.record.head.product;
  std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
  fmt::format_to(std::back_inserter(html),
                 "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                 "style-src '{}'; script-src '{}'; base-uri 'none'; form-action 'none'\">\n",
                 kPageStyle.hash, kPageScript.hash);
  html +=
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta name=\"color-scheme\" content=\"light dark\">\n";
  fmt::format_to(std::back_inserter(html), "<title>{}: where the time went</title>\n",
                 HtmlText(product.empty() ? timeline.run.name : product));
  return html + "<style>" + TextOf(kPageStyle) + "</style>\n</head>\n<body>\n";
}

/// Links to the parts of the page; the script shows one part at a time by them.
std::string Navigation(const Timeline& timeline) {
  std::string html = "<nav aria-label=\"Parts of the run\">\n";
  for (const PhaseTimeline* phase : {&timeline.start, &timeline.stop}) {
    if (!phase->begun) continue;
    const char* id = phase == &timeline.start ? "start" : "stop";
    const char* name = phase == &timeline.start ? "Start" : "Stop";
    fmt::format_to(std::back_inserter(html),
                   "<span>{}: <a href=\"#{}\">plugins</a> <a href=\"#{}-threads\">threads</a>"
                   "</span>\n",
                   name, id, id);
  }
  return html + "</nav>\n";
}

/// What only the script can do; hidden without it.
std::string Tools() {
  std::string html = R"html(<form id="tools" hidden aria-label="Sort, filter and zoom">
<label>Sort <select id="sort">
<option value="begin">begin</option>
<option value="model">model order</option>
<option value="duration">duration</option>
<option value="slack">slack</option>
<option value="name">name</option>
</select></label>
<input id="filter" type="search" size="13" placeholder="part of a name" aria-label="Part of a name">
<label>Result <select id="result">
<option value="">all</option>
<option value="path">critical path</option>
)html";
  for (const ResultWords& result : AllResults()) {
    fmt::format_to(std::back_inserter(html), "<option value=\"{}\">{}</option>\n", result.key,
                   result.text);
  }
  return html + R"html(</select></label>
<span role="group" aria-label="Zoom">
<button type="button" id="zoom-out" aria-label="Zoom out" title="Zoom out (-)">−</button>
<button type="button" id="zoom-in" aria-label="Zoom in" title="Zoom in (+)">+</button>
<button type="button" id="zoom-all" title="Whole time (0)">Whole</button>
<button type="button" id="earlier" aria-label="Earlier" title="Earlier (←)">◀</button>
<button type="button" id="later" aria-label="Later" title="Later (→)">▶</button>
</span>
<output id="count" role="status"></output>
</form>
)html";
}

std::string PhaseSection(const Timeline& timeline, const PhaseTimeline& phase) {
  const PhaseView view(timeline, phase);
  const std::string id = view.Word();
  const char* title = view.IsStart() ? "Start" : "Stop";
  std::string html = fmt::format(
      "<section id=\"{}\" class=\"phase\" data-wall=\"{}\"{} aria-labelledby=\"{}-title\">\n"
      "<h2 id=\"{}-title\">{} of the plugins</h2>\n",
      id, phase.balance.wall, timeline.run.knowsEdges ? " data-edges=\"known\"" : "", id, id,
      title);
  html += "<div class=\"overview\">\n<div>\n" + BalanceHtml(view) + AttentionHtml(view) +
          "</div>\n" + PathTable(view) + "</div>\n";
  html += fmt::format("<section id=\"{}-plugins\" aria-label=\"{}: plugins\">\n<h3>Plugins</h3>\n",
                      id, title) +
          LegendHtml(view) + PluginTable(view) + "</section>\n";
  html += fmt::format("<section id=\"{}-threads\" aria-label=\"{}: threads\">\n<h3>Threads</h3>\n",
                      id, title) +
          ThreadTable(view) + "</section>\n";
  return html + "</section>\n";
}

}  // namespace

std::string ReportHtml(const Timeline& timeline) {
  std::string html = Head(timeline) + DefinitionsSvg() + RunSummary(timeline);
  html += "<input id=\"all-times\" type=\"checkbox\" class=\"sr\">\n<div id=\"bar\">\n" +
          Navigation(timeline) + "<label for=\"all-times\">all times</label>\n" + Tools() +
          "</div>\n<main>\n";
  for (const PhaseTimeline* phase : {&timeline.start, &timeline.stop}) {
    if (phase->begun) html += PhaseSection(timeline, *phase);
  }
  if (!timeline.start.begun) html += "<p>The start of the plugins had not begun.</p>\n";
  if (!timeline.stop.begun) html += "<p>The stop of the plugins had not begun.</p>\n";
  html +=
      "</main>\n<aside id=\"details\" hidden aria-label=\"The plugin under the "
      "pointer\"></aside>\n";
  return html + "<script>" + TextOf(kPageScript) + "</script>\n</body>\n</html>\n";
}
