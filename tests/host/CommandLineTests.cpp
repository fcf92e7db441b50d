// How HUB interprets its command line.

#include "host/CommandLine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

/// The result of one command line.
struct Outcome {
  std::optional<Request> request;
  ExitStatus status = kOk;
};

/// A product's folder, and other files that a command line may name.
class CommandLine : public testing::Test {
 protected:
  CommandLine() {
    fs::create_directories(folder.Path() / "site" / "bin");
    folder.Write("a.file", "nothing that HUB wrote");
    folder.Write("old.jsonl", R"({"record":"head","schema":1})");
    folder.Write("empty.jsonl", "");
  }

  std::string Path(const std::string& name) const { return LocalFromPath(folder.Path() / name); }

  static Outcome Read(std::vector<std::string> arguments) {
    // One of each in the process, as in HUB.
    static Output& output = *new Output;
    static StopSignal stop;
    arguments.insert(arguments.begin(), "HUB");
    HostContext context{stop, output, arguments};
    Outcome outcome;
    outcome.request = ReadCommandLine(context, outcome.status);
    return outcome;
  }

  /// Whether `run` accepts these options; otherwise expects kUsage as the status.
  bool Takes(std::vector<std::string> options) const {
    options.insert(options.begin(), {"run", "--bin", Path("site/bin")});
    const Outcome outcome = Read(options);
    EXPECT_EQ(outcome.request ? kOk : kUsage, outcome.status);
    return outcome.request.has_value();
  }

  const TemporaryFolder folder;
};

TEST_F(CommandLine, WithoutOptionsHasTheDefaults) {
  const Outcome outcome = Read({"run"});
  ASSERT_TRUE(outcome.request);
  const Options& options = outcome.request->options;
  EXPECT_EQ("", options.bin);
  EXPECT_EQ(1, options.module);
  EXPECT_EQ(0, options.workers);
  EXPECT_EQ("", options.log);
  EXPECT_EQ(0, options.logLevel);
  EXPECT_EQ(64U, options.logSize);
  EXPECT_EQ(8U, options.logFiles);
  EXPECT_FALSE(options.json || options.events || options.all || options.noRecord);
  EXPECT_EQ(Color::kAuto, options.color);
  EXPECT_EQ("", options.record);
  EXPECT_FALSE(options.seconds || options.startTimeout);
  EXPECT_EQ(90, options.stopTimeout);
  EXPECT_EQ(RunCommand().run, outcome.request->run);
}

TEST_F(CommandLine, TakesEachOptionForWhatItIs) {
  const Outcome outcome = Read({"run",
                                "--bin",
                                Path("site/bin"),
                                "--module",
                                "2",
                                "--workers",
                                "3",
                                "--log",
                                Path("hub.log"),
                                "--log-level",
                                "4",
                                "--log-size",
                                "5",
                                "--log-files",
                                "6",
                                "--events",
                                "--all",
                                "--color",
                                "Never",
                                "--record",
                                Path("r.jsonl"),
                                "--seconds",
                                "0.5",
                                "--start-timeout",
                                "7",
                                "--stop-timeout",
                                "0"});
  ASSERT_TRUE(outcome.request);
  const Options& options = outcome.request->options;
  EXPECT_EQ(Path("site/bin"), options.bin);
  EXPECT_EQ(2, options.module);
  EXPECT_EQ(3, options.workers);
  EXPECT_EQ(Path("hub.log"), options.log);
  EXPECT_EQ(4, options.logLevel);
  EXPECT_EQ(5U, options.logSize);
  EXPECT_EQ(6U, options.logFiles);
  EXPECT_FALSE(options.json);
  EXPECT_TRUE(options.events);
  EXPECT_TRUE(options.all);
  EXPECT_EQ(Color::kNever, options.color);
  EXPECT_EQ(Path("r.jsonl"), options.record);
  EXPECT_FALSE(options.noRecord);
  EXPECT_EQ(0.5, options.seconds);
  EXPECT_EQ(7, options.startTimeout);
  EXPECT_EQ(0, options.stopTimeout);
}

TEST_F(CommandLine, OfTheModelRunsTheModel) {
  const Outcome outcome = Read({"model", "--bin", Path("site/bin")});
  ASSERT_TRUE(outcome.request);
  EXPECT_EQ(ModelCommand().run, outcome.request->run);
}

TEST_F(CommandLine, TakesEitherOfTwoOptionsThatExcludeEachOther) {
  EXPECT_TRUE(Takes({"--json"}));
  EXPECT_TRUE(Takes({"--events"}));
  EXPECT_FALSE(Takes({"--json", "--events"}));
  EXPECT_TRUE(Takes({"--no-record"}));
  EXPECT_TRUE(Takes({"--record", Path("r.jsonl")}));
  EXPECT_FALSE(Takes({"--no-record", "--record", Path("r.jsonl")}));
}

TEST_F(CommandLine, TakesAFileInTheProductThatIsNoneOfIt) {
  EXPECT_TRUE(Takes({"--log", Path("site/hub.log"), "--record", Path("site/bin/run.jsonl")}));
  EXPECT_FALSE(Takes({"--log", Path("site/hub.xml")}));
  EXPECT_TRUE(Takes({"--log", Path("beside.xml")}));
}

TEST_F(CommandLine, TakesARecordInPlaceOfARecordOrOfNothing) {
  EXPECT_TRUE(Takes({"--record", Path("old.jsonl")}));
  EXPECT_TRUE(Takes({"--record", Path("empty.jsonl")}));
  EXPECT_TRUE(Takes({"--record", Path("new.jsonl")}));
  EXPECT_FALSE(Takes({"--record", Path("a.file")}));
}

TEST_F(CommandLine, TakesTheBoundsOfANumber) {
  EXPECT_TRUE(Takes({"--workers", "1", "--log-level", "0", "--log-size", "1", "--log-files", "1"}));
  EXPECT_TRUE(Takes({"--workers", "10000", "--log-level", "6", "--log-files", "1000"}));
  EXPECT_TRUE(Takes({"--seconds", "0", "--start-timeout", "0", "--stop-timeout", "0"}));
  EXPECT_FALSE(Takes({"--workers", "0"}));
}

TEST_F(CommandLine, ThatAsksForHelpOrTheVersionEndsWell) {
  for (const std::string option : {"--help", "--version"}) {
    const Outcome outcome = Read({option});
    EXPECT_FALSE(outcome.request);
    EXPECT_EQ(kOk, outcome.status);
  }
}

}  // namespace
