#include "workbench/report/ReportHtml.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/RunText.h"
#include "workbench/report/page/HtmlText.h"

namespace {

std::string Page(RecordedRun run) {
  return ReportHtml(MakeTimeline(std::move(run)));
}

/// The lines of a page that contain a text.
std::string LinesWith(const std::string& page, const std::string& text) {
  std::istringstream stream(page);
  std::string lines;
  for (std::string line; std::getline(stream, line);) {
    if (line.find(text) != std::string::npos) lines += line + "\n";
  }
  return lines;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::size_t Occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
    ++count;
  }
  return count;
}

constexpr char kChain[] = R"(
    a:
    b: a
    start 100 500
    a start 101 102 112 140 141
    b start 300 302 304 - - )";

TEST(ReportHtml, ARowHasResultBarAndTimesOfItsPlugin) {
  const std::string page = Page(RunFromText(R"(
    a:
    b: a
    start 100 500
    a start 101 102 112 140 141
    b start 300 302 312 390 400 failed why)"));
  EXPECT_EQ(
      "<tr id=start-1 data-r=failed data-w=\"0\" data-by=0 class=path><th scope=row><bdi>b</bdi>"
      "<td>Init failed<td class=b><div><svg aria-hidden=true>"
      "<rect class=o x=0% width=10.25% /><rect class=l x=10.25% width=39.75% />"
      "<rect class=q x=50% width=0.5% /><rect class=d x=50.5% width=2.5% />"
      "<rect class=r x=53% width=19.5% /><rect class=z x=72.5% width=2.5% />"
      "<line class=\"e\" x1=\"10.25%\" x2=\"10.25%\" y1=\"-12\" y2=\"12\"/></svg></div>"
      "<td>202.0<td>98.0<td>0.0<td>41.0<td>a<td>159.0<td>2.0<td>10.0<td>78<td>2<td>why\n",
      LinesWith(page, "id=start-1 "));
}

TEST(ReportHtml, PartsOfTheWallTimeAddUpAsShown) {
  const std::string page = Page(RunFromText(R"(
    a:
    b: a
    start 0 400.1
    a start 0.04 0.08 1 40.04 40.04
    b start 200.08 200.12 201 240.16 240.16)"));
  EXPECT_EQ(
      "<p class=\"sum\"><b>400.1 ms</b> = 80.0 ms critical path + 320.0 ms waiting for the next "
      "look + 0.1 ms idle</p>\n",
      LinesWith(page, "class=\"sum\""));
}

TEST(ReportHtml, CriticalPathNamesWhatReleasedEachPlugin) {
  const std::string page = Page(RunFromText(R"(
    a:
    b: a
    start 0 400
    a start 0 2 2 40 40
    b start 200 200 200 300 300)"));
  EXPECT_EQ(
      "<tr><th scope=row><a href=\"#start-1\"><bdi>b</bdi></a><td>a<td>160.0<td>0.0<td>100.0"
      "<td>25.0%\n",
      LinesWith(page, "<a href=\"#start-1\">"));
}

TEST(ReportHtml, OfAHungRunSaysWhoHasNotReturnedAndWhoWaits) {
  const std::string page = Page(RunFromText(R"(
    hangs:
    behind: hangs
    other:
    start 0 -
    hangs start 0 1 5 - -
    other start 0 1 5 2005 2005)"));
  EXPECT_EQ(
      "<li data-r=\"not-returned\"><a href=\"#start-0\"><bdi>hangs</bdi></a>: has not returned: in "
      "Init for 2000.0 ms at the last event; 1 plugin waits for it: behind</li>\n",
      LinesWith(page, "<li data-r=\"not-returned\"><a"));
  EXPECT_EQ(
      "<tr id=start-1 data-r=not-begun data-w=\"0\"><th scope=row><bdi>behind</bdi><td>not begun"
      "<td class=b><div><svg aria-hidden=true><rect class=o x=0% width=100% "
      "/></svg></div><td>–<td>–<td>–<td>–"
      "<td>still hangs<td>–<td>–<td>–<td>–<td>–<td>\n",
      LinesWith(page, "id=start-1 "));
  EXPECT_EQ(
      "<p class=\"outcome open\"><span aria-hidden=\"true\">…</span> The start had not ended: it "
      "is shown up to the last event of the run.</p>\n",
      LinesWith(page, "had not ended"));
}

TEST(ReportHtml, OfACrashShowsItsSentence) {
  RecordedRun run = RunFromText(kChain);
  RunEvent crash;
  crash.kind = RunEvent::Kind::kCrash;
  crash.nanoseconds = run.record.events.back().nanoseconds;
  crash.plugin = "b";
  crash.phase = RunPhase::kStart;
  crash.text = "b crashed <here>";
  run.record.events.push_back(crash);
  EXPECT_EQ(
      "<p class=\"outcome bad\"><span aria-hidden=\"true\">✖</span> Crashed: b crashed "
      "&lt;here&gt;</p>\n",
      LinesWith(Page(std::move(run)), "outcome bad"));
}

RecordedRun Log() {
  RecordedRun run = RunFromText("a:\nb:\nstart 0 200\na start - 1 1 40 41\nb start - 3 3 9 10");
  run.source = RecordedRun::Source::kLog;
  run.resolution = 1'000'000;
  run.knowsTasks = run.knowsThreads = run.knowsEdges = false;
  for (RunEvent& event : run.record.events) {
    if (event.kind == RunEvent::Kind::kReady) event.plugin.clear();
  }
  return run;
}

TEST(ReportHtml, OfALogSaysWhatIsNotKnown) {
  const std::string page = Page(Log());
  EXPECT_EQ(
      "<tr id=start-0 data-r=ok data-w=\"\"><th scope=row><bdi>a</bdi><td>started<td class=b><div>"
      "<svg aria-hidden=true>"
      "<rect class=r x=0.5% width=19.5% /><rect class=z x=20% width=0.5% /></svg></div>"
      "<td>1<td>40<td>not known<td>not known<td>not known<td>not known<td>not known<td>0<td>39"
      "<td>not known<td>\n",
      LinesWith(page, "id=start-0 "));
  EXPECT_EQ("<p class=\"sum\"><b>200 ms</b></p>\n", LinesWith(page, "class=\"sum\""));
  EXPECT_EQ(
      "<p>What waits for what is not known: the log does not name it, so there is neither a "
      "critical path nor slack.</p>\n"
      "<p>Which thread ran which plugin is not known: the log does not name threads.</p>\n",
      LinesWith(page, "is not known:"));
}

TEST(ReportHtml, OfALogShowsItsNotesAndResultsThatAreNotKnown) {
  RecordedRun run = Log();
  run.notes = {"the log does not contain the begin of <this> run"};
  for (RunEvent& event : run.record.events) event.result = RunEvent::Result::kNone;
  const std::string page = Page(std::move(run));
  EXPECT_EQ(
      "<li class=\"warning\"><b>the log</b>: the log does not contain the begin of &lt;this&gt; "
      "run</li>\n",
      LinesWith(page, "<b>the log</b>"));
  EXPECT_EQ(1U, Occurrences(page,
                            "<tr id=start-0 data-r=not-known data-w=\"\"><th scope=row>"
                            "<bdi>a</bdi><td>not known<td"));
}

TEST(ReportHtml, OfALogWithEdgesDoesNotTellLooksFromThreads) {
  RecordedRun run =
      RunFromText("a:\nb: a\nstart 0 200\na start - 1 1 40 40\nb start - 90 90 99 99");
  run.source = RecordedRun::Source::kLog;
  run.knowsTasks = run.knowsThreads = false;
  for (RunEvent& event : run.record.events) event.task = 0;
  EXPECT_EQ(
      "<p class=\"sum\"><b>200.0 ms</b> = 48.0 ms critical path + 152.0 ms waiting for looks and "
      "threads</p>\n",
      LinesWith(Page(std::move(run)), "class=\"sum\""));
}

TEST(ReportHtml, OfARunWithoutPhasesSaysSo) {
  const std::string page = Page(RunFromText(""));
  EXPECT_EQ("<p>The start of the plugins had not begun.</p>\n", LinesWith(page, "start of the"));
  EXPECT_EQ("<p>The stop of the plugins had not begun.</p>\n", LinesWith(page, "stop of the"));
}

/// A run that has `word` wherever a record can have any text.
RecordedRun RunOf(const std::string& word) {
  RecordedRun run = RunFromText(R"(
    a:
    b: a
    x:
    start 0 -
    a start 0 1 2 40 41 failed why
    b start 200 201 202 - -
    x start 0 1 - - 2 not-loaded why)");
  for (PluginHead& plugin : run.record.plugins) {
    plugin.id = plugin.id + word;
    for (std::string& other : plugin.dependsOn) other += word;
  }
  for (RunEvent& event : run.record.events) {
    if (!event.plugin.empty()) event.plugin += word;
    if (!event.text.empty()) event.text += word;
  }
  for (const RunEvent::Kind kind :
       {RunEvent::Kind::kFinding, RunEvent::Kind::kStopRequest, RunEvent::Kind::kCrash}) {
    RunEvent event;
    event.kind = kind;
    event.nanoseconds = run.record.events.back().nanoseconds;
    event.text = word;
    run.record.events.push_back(event);
  }
  RunHead& head = run.record.head;
  for (std::string* text : {&head.product, &head.productVersion, &head.path, &head.host,
                            &head.hubVersion, &head.zone, &head.time, &run.name}) {
    *text = word;
  }
  run.notes = {word};
  return run;
}

TEST(ReportHtml, NoTextOfARunIsMarkup) {
  const std::string harmless = "a-name-that-is-too-long-for-the-column-it-is-in";
  const std::string expected = Page(RunOf(harmless));
  for (const std::string& text : std::vector<std::string>{
           "</script><script>alert(1)</script>------", "\"><img src=x onerror='alert(1)'>--------",
           "<!-- and ]]> and </title></style>", "&lt;&amp;&#60;-----------------------",
           std::string("nul\0and\x1b[31m, \x7f, and CR\r, LF\n", 29),
           "U+2028 \xe2\x80\xa8, an override \xe2\x80\xae and \xff\xc3 invalid"}) {
    const std::string word = text + harmless;
    EXPECT_EQ(Replaced(expected, harmless, HtmlText(word)), Page(RunOf(word)));
  }
}

TEST(HtmlTexts, ShowMarkupAndControlCharactersAsText) {
  EXPECT_EQ("&lt;/script&gt;&amp;&quot;&#39;", HtmlText("</script>&\"'"));
  EXPECT_EQ("\\x00\\x1b\\x0a\\xff\\u2028\\u202e",
            HtmlText(std::string("\0\x1b\n\xff\xe2\x80\xa8\xe2\x80\xae", 10)));
  EXPECT_EQ("(no ID)", HtmlID(""));
}

TEST(ReportHtml, HasOneScriptAndOneStyle) {
  const std::string page = Page(RunOf("</script><style>"));
  EXPECT_EQ(1U, Occurrences(page, "<script"));
  EXPECT_EQ(1U, Occurrences(page, "</script"));
  EXPECT_EQ(1U, Occurrences(page, "<style"));
  EXPECT_EQ(1U, Occurrences(page, "</style"));
}

/// 900 plugins with long names in a chain of five waits each, started and stopped.
RecordedRun LargeRun() {
  constexpr int count = 900;
  constexpr int edges = 5;
  std::ostringstream text;
  const auto name = [](int i) { return "vendor.component" + std::to_string(1000 + i) + ".server"; };
  for (int i = 0; i < count; ++i) {
    text << name(i) << ":";
    for (int other = std::max(0, i - edges); other < i; ++other) text << " " << name(other);
    text << "\n";
  }
  text << "start 0 200000\nstop 300000 500000\n";
  for (int i = 0; i < count; ++i) {
    const double at = 200.123 * i;
    text << name(i) << " start " << at << " " << at + 1.1 << " " << at + 2.2 << " " << at + 33.3
         << " " << at + 33.4 << "\n";
  }
  for (int i = count; i-- > 0;) {
    const double at = 300000 + 200.123 * (count - i);
    text << name(i) << " stop " << at << " " << at + 1.1 << " " << at + 1.1 << " " << at + 3.3
         << " " << at + 3.4 << "\n";
  }
  return RunFromText(text.str());
}

TEST(ReportHtml, OfNineHundredPluginsIsBelowTwoMegabytes) {
  const std::string page = Page(LargeRun());
  EXPECT_EQ(1800U, Occurrences(page, "<tr id="));
  EXPECT_GT(2'000'000U, page.size());
}

}  // namespace
