#include "workbench/shake/ShakeAnalysis.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

using Strings = std::vector<std::string>;

/// "a b:a c:a,b": three plugins with what they depend on.
std::vector<PluginHead> Plugins(const std::string& text) {
  std::vector<PluginHead> plugins;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    PluginHead& plugin = plugins.emplace_back();
    const std::size_t colon = word.find(':');
    plugin.id = word.substr(0, colon);
    plugin.kind = "server";
    std::istringstream list(colon == std::string::npos ? "" : word.substr(colon + 1));
    for (std::string id; std::getline(list, id, ',');) plugin.dependsOn.push_back(id);
  }
  return plugins;
}

/// A run, word by word in the order of time: "a(" Init begins, "a)" it returns true, "a!" it
/// returns false, "a~" it crashes, "a" begins and returns true at once, "-a" begins and returns
/// false. A plugin that is not named did not begin. `alone`: the only plugin that was delayed.
ShakeRun RunIn(const std::string& text, const std::string& alone = "") {
  using Kind = StartOutcome::Kind;
  ShakeRun run;
  run.alone = alone;
  run.options = alone.empty() ? "[" + text + "]" : "--delay " + alone;
  for (const char c : std::string("abcdef")) run.plugins[std::string(1, c)];
  std::int64_t time = 0;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const bool fails = word.front() == '-';
    if (fails) word.erase(0, 1);
    StartOutcome& plugin = run.plugins[word.substr(0, 1)];
    const char what = word.size() > 1 ? word[1] : ' ';
    ++time;
    if (what == '(' || what == ' ') plugin.begin = time;
    plugin.end = time;
    if (what == ')' || what == ' ') plugin.kind = fails ? Kind::kFailed : Kind::kOk;
    if (what == '!') plugin.kind = Kind::kFailed;
    if (what == '~') plugin.kind = Kind::kCrashed;
    if (what == '~') plugin.end = plugin.begin;
  }
  return run;
}

/// What was found, one finding in each line.
std::string Found(const ShakeAnalysis& analysis) {
  std::string text;
  for (const MissingDependency& missing : analysis.missing) {
    text += missing.plugin + (missing.isShown ? " needs" : " may need");
    for (const std::string& other : missing.others) text += " " + other;
    text += "\n";
  }
  for (const PluginNote& note : analysis.unexplained) text += note.plugin + " changes\n";
  for (const PluginNote& note : analysis.consequences) {
    text += note.plugin + " follows " + note.because + "\n";
  }
  for (const PluginNote& note : analysis.always) text += note.plugin + " always\n";
  return text;
}

TEST(ShakenProduct, WithoutAChangeHasNoFindings) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b"), {RunIn("a b"), RunIn("b a")});
  EXPECT_EQ("", Found(analysis));
  EXPECT_EQ(Strings(), analysis.experiments);
}

TEST(ShakenPlugin, ThatFailsBeforeAnotherMayNeedIt) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b c"), {RunIn("a c b"), RunIn("c -b a"), RunIn("c a b"), RunIn("-b c a")});
  EXPECT_EQ("b may need a\n", Found(analysis));
  EXPECT_EQ((Strings{"a", "c"}), analysis.experiments);
  EXPECT_EQ("[c -b a]", analysis.missing.front().options);
  EXPECT_EQ((OrderEvidence{2, 2, 2, 2}), analysis.missing.front().evidence);
}

TEST(ShakenPlugin, ThatFailsWithOneDelayedAloneNeedsIt) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b c"),
              {RunIn("a c b"), RunIn("c -b a"), RunIn("c -b a", "a"), RunIn("c -b a", "a")});
  EXPECT_EQ("b needs a\n", Found(analysis));
  EXPECT_EQ(Strings(), analysis.experiments);
  EXPECT_EQ("--delay a", analysis.missing.front().options);
}

TEST(ShakenPlugin, IsNotExplainedByOneRunAlone) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b"), {RunIn("a b"), RunIn("-b a", "a")});
  EXPECT_EQ("b may need a\n", Found(analysis));
}

TEST(ShakenPlugin, ThatSeveralExplainIsToBeTriedWithEach) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b c"), {RunIn("a c b"), RunIn("-b a c")});
  EXPECT_EQ("b may need a c\n", Found(analysis));
  EXPECT_EQ((Strings{"a", "c"}), analysis.experiments);
}

TEST(ShakenPlugin, NeedsNoneThatWasLateWhenItWasWell) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b c"),
              {RunIn("a c b"), RunIn("-b a c"), RunIn("a b c", "c"), RunIn("a b c", "c")});
  EXPECT_EQ("b may need a\n", Found(analysis));
}

TEST(ShakenPlugin, NeedsNoneOfThoseThatItIsOrderedWith) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b:a c:b d"), {RunIn("d a b c"), RunIn("a -b c d")});
  EXPECT_EQ("b may need d\n", Found(analysis));
}

TEST(ShakenPlugin, MayNeedOneThatCameUpDuringItsStart) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b"), {RunIn("a b"), RunIn("b( a b)"), RunIn("-b a")});
  EXPECT_EQ("b may need a\n", Found(analysis));
  EXPECT_EQ((OrderEvidence{1, 1, 1, 1}), analysis.missing.front().evidence);
}

/// c depends on a, so a delay of a alone delays c as well; b fails without c.
TEST(ShakenPlugin, NeedsTheLaterOfTwoThatAreDelayedTogether) {
  const std::vector<PluginHead> plugins = Plugins("a b c:a");
  std::vector<ShakeRun> runs = {RunIn("a c b"), RunIn("-b a c", "a"), RunIn("-b a c", "a")};
  EXPECT_EQ(Strings{"c"}, Analyse(plugins, runs).experiments);
  runs.push_back(RunIn("a -b c", "c"));
  runs.push_back(RunIn("a -b c", "c"));
  EXPECT_EQ("b needs c\n", Found(Analyse(plugins, runs)));
}

TEST(ShakenPlugin, NeedsTheEarlierOfTwoWhenThatIsEnough) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b c:a"), {RunIn("a c b"), RunIn("-b a c", "a"), RunIn("-b a c", "a"),
                                   RunIn("a b c", "c"), RunIn("a b c", "c")});
  EXPECT_EQ("b needs a\n", Found(analysis));
}

/// c needs b, and b needs a: a delay of a alone makes both fail.
TEST(ShakenPlugin, NeedsTheOneThatFailsWithoutAThird) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b c"), {RunIn("a b c"), RunIn("-b -c a", "a"), RunIn("-b -c a", "a"),
                                 RunIn("a -c b", "b"), RunIn("a -c b", "b")});
  EXPECT_EQ("b needs a\nc needs b\n", Found(analysis));
}

TEST(ShakenPlugin, MayNeedTwo) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b c"), {RunIn("a c b"), RunIn("a -b c", "c"), RunIn("a -b c", "c"),
                                 RunIn("c -b a", "a"), RunIn("c -b a", "a")});
  EXPECT_EQ("b needs a\nb needs c\n", Found(analysis));
}

TEST(ShakenPlugin, ThatFailsWithItsDependencyIsAConsequence) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b c:b"), {RunIn("a b c"), RunIn("-b -c a")});
  EXPECT_EQ("b may need a\nc follows b\n", Found(analysis));
}

TEST(ShakenPlugin, ThatFailsInEveryRunIsNamed) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b"), {RunIn("a -b"), RunIn("-b a")});
  EXPECT_EQ("b always\n", Found(analysis));
  EXPECT_EQ((PluginNote{"b", StartOutcome::Kind::kFailed, "", 2, 2, "", "[a -b]"}),
            analysis.always.front());
}

TEST(ShakenPlugin, ThatFailsInAnyOrderChangesWithoutAnExplanation) {
  const ShakeAnalysis analysis =
      Analyse(Plugins("a b"), {RunIn("a b"), RunIn("a -b"), RunIn("b a"), RunIn("-b a")});
  EXPECT_EQ("b changes\n", Found(analysis));
  EXPECT_EQ((PluginNote{"b", StartOutcome::Kind::kFailed, "", 2, 4, "", "[a -b]"}),
            analysis.unexplained.front());
}

TEST(ShakenPlugin, ThatCrashesBeforeAnotherMayNeedIt) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b c"), {RunIn("a c b"), RunIn("c b( b~")});
  EXPECT_EQ("b may need a\n", Found(analysis));
  EXPECT_EQ(StartOutcome::Kind::kCrashed, analysis.missing.front().kind);
}

TEST(ShakenPlugin, ThatDidNotBeginSaysNothing) {
  const ShakeAnalysis analysis = Analyse(Plugins("a b c"), {RunIn("a b c"), RunIn("c( c~")});
  EXPECT_EQ("c may need a b\n", Found(analysis));
}

TEST(ReasonClass, IsTheSameForDifferentNumbers) {
  EXPECT_EQ("port # of #", ReasonClass("port 8080 of 2"));
  EXPECT_NE(ReasonClass("no port"), ReasonClass("no file"));
}

}  // namespace
