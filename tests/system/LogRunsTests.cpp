// The log of a run against its flight record: both must say the same of every plugin.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <regex>
#include <sstream>

#include "tests/system/MadeProduct.h"
#include "workbench/record/LogRuns.h"
#include "workbench/record/RunOutcome.h"
#include "workbench/timeline/Timeline.h"

namespace fs = std::filesystem;

namespace {

/// Why a plugin failed. Of a library that was not loaded HUB looks for a better reason than the
/// loader's, which is in the record alone.
std::string Reason(const PluginRun& plugin) {
  return plugin.started == PluginRun::State::kNotLoaded ? "" : ReasonText(plugin);
}

/// What became of each plugin, in the order of their names, then how each was counted, in order.
std::string Summary(const RecordedRun& run) {
  RunState state;
  for (const PluginHead& plugin : run.record.plugins) state.AddPlugin(plugin);
  std::string counts;
  for (const RunEvent& event : run.record.events) {
    state.Apply(event);
    if (event.kind != RunEvent::Kind::kCounted) continue;
    counts += event.phase + " " + std::to_string(event.number) + " " + event.plugin + "\n";
  }
  std::vector<std::string> lines;
  for (const PluginRun& plugin : state.Plugins()) {
    if (plugin.head.kind != "server" && plugin.head.kind != "platform") continue;
    lines.push_back(plugin.head.id + " " + OutcomeWord(plugin) + " " +
                    std::to_string(plugin.initMs) + " " + std::to_string(plugin.uninitMs) + " " +
                    Reason(plugin) + "\n");
  }
  std::sort(lines.begin(), lines.end());
  std::string text;
  for (const std::string& line : lines) text += line;
  return text + counts;
}

constexpr std::int64_t kMillisecond = 1'000'000;

/// By how much the log's clock may be set against the record's, in nanoseconds, for every end of a
/// plugin's work to lie, in the log, between the record's begin and end of that work. The frame
/// logs before HUB records, on the same thread; the log's times are cut to milliseconds.
struct Shift {
  std::int64_t least = std::numeric_limits<std::int64_t>::min();
  std::int64_t most = std::numeric_limits<std::int64_t>::max();

  void Demand(const PluginSpan& record, const PluginSpan& log) {
    if (!record.HasEnded()) return;
    least = std::max(least, record.begin - log.end - kMillisecond);
    most = std::min(most, record.end - log.end);
  }
};

/// Whether one setting of the clocks explains the times of all ends.
testing::AssertionResult HaveTheSameTimes(const RecordedRun& record, const RecordedRun& log) {
  const Timeline one = MakeTimeline(record);
  const Timeline other = MakeTimeline(log);
  Shift shift;
  for (std::size_t i = 0; i < one.plugins.size(); ++i) {
    const auto same =
        std::find_if(other.plugins.begin(), other.plugins.end(),
                     [&](const PluginHead& plugin) { return plugin.id == one.plugins[i].id; });
    if (same == other.plugins.end()) {
      return testing::AssertionFailure() << "The log has no " << one.plugins[i].id;
    }
    const auto at = static_cast<std::size_t>(same - other.plugins.begin());
    shift.Demand(one.start.spans[i], other.start.spans[at]);
    shift.Demand(one.stop.spans[i], other.stop.spans[at]);
  }
  // A millisecond for the log's clock, which may be adjusted during the run.
  if (shift.least <= shift.most + kMillisecond) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << "An end is " << (shift.least - shift.most) / 1000 << " us from where the record has it";
}

/// HUB's log as another host might write it: without offset, level, thread and module.
std::string AsOtherHost(const std::string& log) {
  static const std::regex fields(R"(\+\d\d:\d\d \[\d\] \[\d+\] \[[^\]]*\] )");
  static const std::regex behind(R"(-\d\d:\d\d \[\d\] \[\d+\] \[[^\]]*\] )");
  return std::regex_replace(std::regex_replace(log, fields, " INFO "), behind, " INFO ");
}

class LogOfARun : public testing::Test {
 protected:
  LogOfARun() { settings.record = folder.Path() / "run.jsonl"; }

  std::string Log() const { return " --log \"" + (folder.Path() / "run.log").string() + "\""; }

  RecordedRun Record() const { return ReadRuns({settings.record}, {}).at(0); }

  /// The run of a log of this content.
  RecordedRun Read(const std::string& content) const {
    const std::vector<RecordedRun> runs = ReadRuns({folder.Write("copy.log", content)}, {});
    EXPECT_EQ(std::size_t{1}, runs.size());
    return runs.front();
  }

  void ExpectTheSameAsInTheRecord() const {
    const RecordedRun record = Record();
    const RecordedRun log = Read(folder.Read("run.log"));
    EXPECT_EQ(Summary(record), Summary(log));
    EXPECT_TRUE(HaveTheSameTimes(record, log));
    EXPECT_EQ(record.record.head.pid, log.record.head.pid);
    EXPECT_EQ(record.record.head.product, log.record.head.product);
    EXPECT_EQ(record.record.head.path, log.record.head.path);
    EXPECT_EQ(1'000'000, log.resolution);
    EXPECT_EQ(std::vector<std::string>(), log.notes);
  }

  TemporaryFolder folder;
  HubSettings settings;
};

TEST_F(LogOfARun, OfTheSampleSaysTheSameAsItsRecord) {
  RunHubUntilUp("--bin \"" TEV_SITE "/bin\"" + Log(), settings);
  ExpectTheSameAsInTheRecord();
}

TEST_F(LogOfARun, OfRandomProductsSaysTheSameAsItsRecord) {
  const std::vector<std::string> fixtures = {
      "well_behaved",           "well_behaved",  "init_fails",     "init_throws", "uninit_refuses",
      "init_fails_with_a_word", "uninit_throws", "without_uninit", "well_behaved"};
  for (unsigned seed = 1; seed <= 4; ++seed) {
    std::mt19937 random(seed);
    const auto below = [&](std::size_t most) { return random() % most; };
    MadeProduct product;
    for (std::size_t i = 0; i < 12; ++i) {
      const std::string others = i == 0 || below(3) == 0 ? "" : "p" + std::to_string(below(i));
      product.Plugin("p" + std::to_string(i), fixtures[below(fixtures.size())],
                     others.empty() ? "" : DependsOn(others));
    }
    product.BrokenLibrary("p12", "no library");
    fs::remove(folder.Path() / "run.log");
    fs::remove(settings.record);
    const HubResult result = product.RunUntilUp(Log(), settings);
    SCOPED_TRACE("seed " + std::to_string(seed) + result.errors);
    ExpectTheSameAsInTheRecord();
  }
}

TEST_F(LogOfARun, InAnotherFormSaysTheSameAsItsRecord) {
  MadeProduct product;
  // One after the other: without threads and levels, lines of two stops at once do not say which of
  // the two refused.
  product.Plugin("a").Plugin("b", "well_behaved", DependsOn("a"));
  product.Plugin("d", "well_behaved", DependsOn("a b")).Plugin("e", "init_throws", DependsOn("d"));
  product.Plugin("f", "uninit_refuses", DependsOn("e"));
  product.RunUntilUp(Log(), settings);
  const RecordedRun log = Read(AsOtherHost(folder.Read("run.log")));
  EXPECT_FALSE(log.knowsThreads);
  EXPECT_EQ(Summary(Record()), Summary(log));
}

TEST_F(LogOfARun, AndItsRecordCutAnywhereAreReadOrRefusedWithASentence) {
  MadeProduct product;
  product.Plugin("a").Plugin("b", "init_fails", DependsOn("a")).RunUntilUp(Log(), settings);
  for (const char* name : {"run.jsonl", "run.log"}) {
    const std::string whole = folder.Read(name);
    std::size_t read = 0;
    for (std::size_t size = 0; size < whole.size(); size += 7) {
      for (const std::string& part : {whole.substr(0, size), whole.substr(size)}) {
        const fs::path file = folder.Write("part", part);
        try {
          for (RecordedRun& run : ReadRuns({file}, {})) MakeTimeline(std::move(run));
          ++read;
        } catch (const std::runtime_error& error) {
          EXPECT_EQ(0U, std::string(error.what()).find(file.u8string())) << error.what();
        }
      }
    }
    EXPECT_LT(whole.size() / 7 / 2, read) << name;
  }
}

}  // namespace
