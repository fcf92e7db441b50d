#include "workbench/report/ReportDot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "tests/support/RunText.h"

namespace {

std::string Dot(RecordedRun run, const DotOptions& options = {}) {
  return ReportDot(MakeTimeline(std::move(run)), options);
}

/// A node's "n0" and the lines of its label as "n0: b; start 130.0 ms", or an edge as "n0 -> n1"
/// with its colour and style.
std::string Shown(const std::string& line) {
  static const std::regex edge(R"re(^(\S+ -> \S+) \[.*?color="([^"]*)".*)re");
  static const std::regex node(R"re(^([a-z]+[0-9]+) \[.*?label=(<.*>|"[^"]*"), tooltip=.*)re");
  std::smatch match;
  if (std::regex_match(line, match, edge)) {
    const bool isDashed = line.find("style=dashed") != std::string::npos;
    return match[1].str() + " " + match[2].str() + (isDashed ? " dashed" : "") + "\n";
  }
  if (!std::regex_match(line, match, node)) return std::string();
  const std::string label = std::regex_replace(match[2].str(), std::regex("<BR/>"), "; ");
  return match[1].str() + ": " + std::regex_replace(label, std::regex("<[^>]*>|^<|>$|\""), "") +
         (line.find("peripheries=2") != std::string::npos ? " (focus)" : "") + "\n";
}

/// The nodes and edges, a line each.
std::string Graph(const std::string& dot) {
  std::istringstream lines(dot);
  std::string text;
  for (std::string line; std::getline(lines, line);) text += Shown(line);
  return text;
}

/// The lines of the legend, as they are read.
std::string Legend(const std::string& dot) {
  const std::size_t begin = dot.find("label=<");
  const std::string html = dot.substr(begin, dot.find(">]\n", begin) - begin);
  std::string text = std::regex_replace(html, std::regex("</TD><TD"), " | <");
  text = std::regex_replace(text, std::regex("<[^>]*>|^label=<|<$"), "");
  return std::regex_replace(text, std::regex("&#8212;|&gt;"), "-");
}

constexpr char kDiamond[] = R"(
    base:
    slow: base
    fast: base
    top: slow fast
    start 0 800
    base start 1 2 2 40 41
    slow start 200 203 203 340 341
    fast start 200 202 202 210 211 failed its Init returned false
    top start 400 401 401 700 701
    stop 1000 1200
    top stop 1000 1001 1002 1010 1011
    base stop 1100 1101 1102 1110 1111 refused)";

TEST(Graphs, AreWrittenWhole) {
  EXPECT_EQ(R"(digraph start {
graph [charset="UTF-8", rankdir=LR, nodesep=0.15, ranksep=0.6, labelloc=t, labeljust=l, )"
            R"(fontname="Helvetica", fontsize=11, tooltip=" ",
label=<<TABLE BORDER="0" CELLSPACING="2" CELLPADDING="1">
<TR><TD ALIGN="LEFT"><B>run.jsonl, run of 2026-11-21T18:46:59.123Z</B></TD></TR>
<TR><TD ALIGN="LEFT">start: 400.0 ms = critical path 177.0 + waiting for the next look 218.0 + )"
            R"(idle 5.0; all work 177.0 ms</TD></TR>
<TR><TD ALIGN="LEFT">2 plugins; an arrow goes from a plugin to those that wait for it</TD></TR>
<TR><TD ALIGN="LEFT"><TABLE BORDER="0" CELLSPACING="4" CELLPADDING="2"><TR><TD BORDER="1" )"
            R"(COLOR="#5f6f64" BGCOLOR="#eef3ee">started</TD></TR></TABLE></TD></TR>
<TR><TD ALIGN="LEFT"><FONT COLOR="#1a56db"><B>&#8212;&#8212;&gt;</B></FONT>  critical path: what )"
            R"(the end of the start waited for</TD></TR>
</TABLE>>]
node [shape=box, style="rounded,filled", fontname="Helvetica", fontsize=10, margin="0.1,0.04"]
edge [arrowsize=0.7]
n0 [label=<<B>base</B><BR/><FONT POINT-SIZE="9">start 39.0 ms, Init 38 ms</FONT>>, )"
            R"(tooltip="base\nstart: began 2.0 ms into the phase\n  1.0 ms waiting for the next )"
            R"(look\n  1.0 ms waiting for a thread\n  slack 0.0 ms", fillcolor="#eef3ee", )"
            R"(color="#1a56db", penwidth=2.5]
n1 [label=<<B>slow</B><BR/><FONT POINT-SIZE="9">start 138.0 ms, Init 137 ms</FONT>>, )"
            R"(tooltip="slow\nstart: began 203.0 ms into the phase\n  41.0 ms waiting for other )"
            R"(plugins, the last of them base\n  159.0 ms waiting for the next look\n  3.0 ms )"
            R"(waiting for a thread\n  slack 0.0 ms\ndepends on base", fillcolor="#eef3ee", )"
            R"(color="#1a56db", penwidth=2.5]
n0 -> n1 [color="#1a56db", penwidth=2.5, tooltip="slow depends on base"]
}
)",
            Dot(RunFromText(R"(
    base:
    slow: base
    start 0 400
    base start 1 2 2 40 41
    slow start 200 203 203 340 341)")));
}

TEST(Graphs, HaveTimesAndResultsOfStartAndStop) {
  EXPECT_EQ(
      "n0: base; start 39.0 ms, Init 38 ms; stop 10.0 ms, UnInit 8 ms: refused\n"
      "n1: slow; start 138.0 ms, Init 137 ms; stop: not begun\n"
      "n2: fast; start 9.0 ms, Init 8 ms: failed; stop: not begun\n"
      "n3: top; start 300.0 ms, Init 299 ms; stop 10.0 ms, UnInit 8 ms\n"
      "n0 -> n1 #1a56db\n"
      "n0 -> n2 #555555\n"
      "n1 -> n3 #1a56db\n"
      "n2 -> n3 #a0a0a0 dashed\n",
      Graph(Dot(RunFromText(kDiamond))));
}

TEST(Graphs, HaveALegendOfWhatIsInThem) {
  EXPECT_EQ(R"(
run.jsonl, run of 2026-11-21T18:46:59.123Z
start: 800.0 ms = critical path 477.0 + waiting for the next look 317.0 + idle 6.0; all work )"
            R"(486.0 ms
stop: 200.0 ms = critical path 10.0 + waiting for the next look 0.0 + idle 190.0; all work )"
            R"(20.0 ms
4 plugins; an arrow goes from a plugin to those that wait for it
started | start failed | not returned, or refused to stop
---  critical path: what the end of the start waited for
---  the dependency that it waited for last, which released it
- - --  another dependency
)",
            Legend(Dot(RunFromText(kDiamond))));
}

TEST(Graphs, SayWhyAPluginFailed) {
  const std::string dot = Dot(RunFromText(kDiamond));
  EXPECT_NE(std::string::npos, dot.find(R"(\n  its Init returned false\n)"));
}

TEST(Graphs, ShowCyclesAndWhoWaitsBehindThem) {
  const std::string dot = Dot(RunFromText(R"(
    a: c
    b: a
    c: b
    self: self
    behind: c
    free:
    start 0 -
    free start 0 0 0 10 11)"));
  EXPECT_EQ(
      "n0: a; start: not begun\n"
      "n1: b; start: not begun\n"
      "n2: c; start: not begun\n"
      "n3: self; start: not begun\n"
      "n4: behind; start: not begun\n"
      "n5: free; start 11.0 ms, Init 10 ms\n"
      "n2 -> n0 #d00000\n"
      "n0 -> n1 #d00000\n"
      "n1 -> n2 #d00000\n"
      "n3 -> n3 #d00000\n"
      "n2 -> n4 #c26a00 dashed\n",
      Graph(dot));
  EXPECT_NE(std::string::npos,
            Legend(dot).find("part of a cycle: none of its plugins ever starts"));
}

TEST(Graphs, OfAHungStartShowWhoWaitsForWhom) {
  const std::string dot = Dot(RunFromText(R"(
    base:
    hangs: base
    waits: hangs base
    start 0 -
    base start 0 0 0 10 10
    hangs start 200 200 200 - -)"));
  EXPECT_EQ(
      "n0: base; start 10.0 ms, Init 10 ms\n"
      "n1: hangs; start 0.0 ms: not returned\n"
      "n2: waits; start: not begun\n"
      "n0 -> n1 #1a56db\n"
      "n1 -> n2 #c26a00 dashed\n"
      "n0 -> n2 #a0a0a0 dashed\n",
      Graph(dot));
}

TEST(Graphs, OfAStoppedStartShowWhatEndedTooLate) {
  EXPECT_EQ(
      "n0: late; start 700.0 ms, Init 700 ms\n"
      "n1: waits; start: not begun\n"
      "n0 -> n1 #c26a00 dashed\n",
      Graph(Dot(RunFromText(R"(
    late:
    waits: late
    start 0 400
    late start 0 0 0 700 700)"))));
}

TEST(Graphs, OfARunWithoutDependenciesSayThat) {
  RecordedRun run = RunFromText("a:\nb:\nstart 0 9\na start - 1 2 3 4\nb start - 1 2 3 4");
  run.knowsEdges = false;
  run.resolution = 1'000'000;
  const std::string dot = Dot(std::move(run));
  EXPECT_EQ("n0: a; start 3 ms, Init 1 ms\nn1: b; start 3 ms, Init 1 ms\n", Graph(dot));
  EXPECT_EQ(R"(
run.jsonl, run of 2026-11-21T18:46:59.123Z
start: 9 ms; all work 6 ms
2 plugins; an arrow goes from a plugin to those that wait for it
Dependencies not known: the run does not say which plugins waited for which
started
)",
            Legend(dot));
}

TEST(Graphs, CountDependenciesOnPluginsThatTheRunDoesNotHave) {
  EXPECT_NE(std::string::npos,
            Legend(Dot(RunFromText("a: gone lost\nstart 0 9")))
                .find("Left out: dependencies on plugins that the run does not have: 2\n"));
}

constexpr char kChain[] = R"(
    a:
    b: a
    c: b x
    d: c
    e: d
    x:
    y: b
    start 0 9)";

TEST(Graphs, WithAFocusEndInMarksOfWhatIsLeftOut) {
  DotOptions options;
  options.focus = "c";
  options.depth = 1;
  const std::string dot = Dot(RunFromText(kChain), options);
  EXPECT_EQ(
      "n1: b; start: not begun\n"
      "n2: c; start: not begun (focus)\n"
      "n3: d; start: not begun\n"
      "n5: x; start: not begun\n"
      "before1: \xE2\x80\xA6 1 more\n"
      "before1 -> n1 #c0c0c0\n"
      "after1: \xE2\x80\xA6 1 more\n"
      "n1 -> after1 #c0c0c0\n"
      "n1 -> n2 #c26a00 dashed\n"
      "n5 -> n2 #c26a00 dashed\n"
      "n2 -> n3 #c26a00 dashed\n"
      "after3: \xE2\x80\xA6 1 more\n"
      "n3 -> after3 #c0c0c0\n",
      Graph(dot));
  EXPECT_NE(std::string::npos, Legend(dot).find("4 of 7 plugins: those within one dependency of c; "
                                                "an arrow goes from"));
}

TEST(Graphs, WithAFocusReachAsFarAsTheirDepth) {
  DotOptions options;
  options.focus = "c";
  options.depth = 2;
  const std::string dot = Dot(RunFromText(kChain), options);
  EXPECT_EQ(
      "n0: a; start: not begun\n"
      "n1: b; start: not begun\n"
      "n2: c; start: not begun (focus)\n"
      "n3: d; start: not begun\n"
      "n4: e; start: not begun\n"
      "n5: x; start: not begun\n"
      "n0 -> n1 #c26a00 dashed\n"
      "after1: \xE2\x80\xA6 1 more\n"
      "n1 -> after1 #c0c0c0\n"
      "n1 -> n2 #c26a00 dashed\n"
      "n5 -> n2 #c26a00 dashed\n"
      "n2 -> n3 #c26a00 dashed\n"
      "n3 -> n4 #c26a00 dashed\n",
      Graph(dot));
  options.depth = 0;
  EXPECT_EQ(
      "n2: c; start: not begun (focus)\n"
      "before2: \xE2\x80\xA6 2 more\n"
      "before2 -> n2 #c0c0c0\n"
      "after2: \xE2\x80\xA6 1 more\n"
      "n2 -> after2 #c0c0c0\n",
      Graph(Dot(RunFromText(kChain), options)));
}

TEST(Graphs, SayWhenTheFocusIsNoPlugin) {
  const Timeline timeline = MakeTimeline(RunFromText(kChain));
  EXPECT_EQ("", FocusFault(timeline, "c"));
  const std::string sentence =
      "run.jsonl has no plugin \"v\\x0a\"; its plugins are a, b, c, d, e, x and y";
  EXPECT_EQ(sentence, FocusFault(timeline, "v\n"));
  try {
    ReportDot(timeline, {"v\n", 1});
    FAIL() << "the focus is accepted";
  } catch (const std::invalid_argument& error) {
    EXPECT_EQ(sentence, error.what());
  }
  EXPECT_EQ("run.jsonl has no plugins, so no \"c\"",
            FocusFault(MakeTimeline(RunFromText("start 0 9")), "c"));
}

TEST(Graphs, ShowHostileNamesAsTexts) {
  const std::string hostile = "\"\\N<b>&lt;\n\xff\xef\xbf\xbf";
  RecordedRun run = RunFromText("x:\ny: x\nstart 0 9");
  run.record.plugins[0].id = hostile;
  run.record.plugins[1].dependsOn = {hostile};
  const std::string dot = Dot(std::move(run));
  // As HTML, where only a change of the element keeps \N from being replaced.
  EXPECT_NE(std::string::npos,
            dot.find("n0 [label=<<B>\"\\</B><B>N&lt;b&gt;&amp;lt;\\</B><B>x0a\\</B><B>xff\\</B><B>"
                     "uffff</B><BR/>"));
  const std::string quoted = R"(\"\\N<b>&amp;lt;\\x0a\\xff\\uffff")";
  EXPECT_NE(std::string::npos, dot.find("tooltip=\"" + quoted));
  EXPECT_NE(std::string::npos, dot.find("tooltip=\"y depends on " + quoted));
}

TEST(Graphs, CutLongNames) {
  const std::string id(60, 'x');
  const std::string graph = Graph(Dot(RunFromText(id + ":\nstart 0 9")));
  EXPECT_EQ("n0: " + std::string(37, 'x') + "...; start: not begun\n", graph);
}

}  // namespace
