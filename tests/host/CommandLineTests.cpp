// What HUB takes on its command line, and in which words it refuses the rest.

#include "host/CommandLine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using testing::StartsWith;

namespace {

/// What becomes of one command line.
struct Outcome {
  std::optional<Request> request;
  ExitStatus status = kOk;
  std::string errors;
};

/// A product's folder, and other files that a command line may name.
class CommandLine : public testing::Test {
 protected:
  CommandLine() {
    fs::create_directories(folder.Path() / "site" / "bin");
    folder.Write("site/Product.xml", "<ProductDescription/>");
    folder.Write("a.file", "nothing that HUB wrote");
    folder.Write("old.jsonl", R"({"record":"head","schema":1})");
    folder.Write("empty.jsonl", "");
  }

  std::string Path(const std::string& name) const { return LocalFromPath(folder.Path() / name); }

  static Outcome Read(std::vector<std::string> arguments) {
    // Both once in the process, as in HUB.
    static Output& output = *new Output;
    static StopSignal stop;
    arguments.insert(arguments.begin(), "HUB");
    HostContext context{stop, output, arguments};
    std::ostringstream errors;
    std::streambuf* before = std::cerr.rdbuf(errors.rdbuf());
    Outcome outcome;
    outcome.request = ReadCommandLine(context, outcome.status);
    std::cerr.rdbuf(before);
    outcome.errors = errors.str();
    return outcome;
  }

  /// The sentence with which these arguments are refused.
  static std::string Refused(const std::vector<std::string>& arguments) {
    const Outcome outcome = Read(arguments);
    EXPECT_FALSE(outcome.request);
    EXPECT_EQ(kUsage, outcome.status);
    return outcome.errors;
  }

  /// The same for an option of `run` on the product.
  std::string RunRefused(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"run", "--bin", Path("site/bin")});
    return Refused(arguments);
  }

  bool RunTaken(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"run", "--bin", Path("site/bin")});
    return Read(arguments).request.has_value();
  }

  const TemporaryFolder folder;
};

/// A sentence of the command line's grammar.
std::string Grammar(const std::string& sentence) {
  return sentence + "\nRun with --help for more information.\n";
}

TEST_F(CommandLine, WithoutACommandIsRefused) {
  EXPECT_EQ(Grammar("A subcommand is required"), Refused({}));
  EXPECT_EQ(Grammar("A subcommand is required"), Refused({"fly"}));
}

TEST_F(CommandLine, TakesOneOfTwoWaysToShowARunAndNotBoth) {
  EXPECT_EQ("HUB: --json and --events: only one of them\n", RunRefused({"--json", "--events"}));
  EXPECT_TRUE(RunTaken({"--json"}));
  EXPECT_TRUE(RunTaken({"--events"}));
}

TEST_F(CommandLine, RefusesARecordThatIsNotToBeWritten) {
  EXPECT_EQ("HUB: --record and --no-record: only one\n",
            RunRefused({"--no-record", "--record", Path("new.jsonl")}));
  EXPECT_TRUE(RunTaken({"--no-record"}));
}

TEST_F(CommandLine, RefusesNumbersOutOfTheirBounds) {
  for (const std::string seconds : {"soon", "-1", "nan", "inf", "1s"}) {
    for (const std::string option : {"--seconds", "--start-timeout", "--stop-timeout"}) {
      EXPECT_EQ(Grammar(option + ": \"" + seconds + "\" is no number of seconds from 0 up"),
                RunRefused({option, seconds}));
    }
  }
  const auto bounds = [this](const std::string& option, const std::string& number,
                             const std::string& least, const std::string& most) {
    EXPECT_EQ(
        Grammar(option + ": Value " + number + " not in range " + least + " to " + most),
        RunRefused({option, number}));
  };
  bounds("--workers", "0", "1", "10000");
  bounds("--workers", "10001", "1", "10000");
  bounds("--log-level", "7", "0", "6");
  bounds("--log-level", "-1", "0", "6");
  bounds("--log-size", "0", "1", "1048576");
  bounds("--log-files", "0", "1", "1000");
  bounds("--log-files", "1001", "1", "1000");
}

TEST_F(CommandLine, RefusesAFolderThatIsNone) {
  const std::string missing = Path("nowhere");
  EXPECT_EQ("HUB: --bin: " + missing + " does not exist\n", Refused({"run", "--bin", missing}));
  EXPECT_EQ("HUB: --bin: " + Path("a.file") + " is no folder\n",
            Refused({"model", "--bin", Path("a.file")}));
}

TEST_F(CommandLine, RefusesToWriteOverTheProductsFiles) {
  const std::vector<std::string> own = {"site/Product.xml", "site/bin/META_INFO/new.DATA",
                                        "site/bin/a.server.dll", "site/bin/HUB.exe",
                                        "site/bin/lib.so"};
  for (const std::string& file : own) {
    for (const std::string option : {"--log", "--record"}) {
      EXPECT_EQ("HUB: " + option + ": " + Path(file) +
                    " is one of the product's own files, or could pass for one\n",
                RunRefused({option, Path(file)}));
    }
  }
  EXPECT_TRUE(RunTaken({"--log", Path("site/hub.log"), "--record", Path("site/bin/run.jsonl")}));
  EXPECT_TRUE(RunTaken({"--log", Path("beside.xml")}));
}

TEST_F(CommandLine, RefusesARecordInPlaceOfAnythingButARecord) {
  EXPECT_EQ("HUB: --record: " + Path("a.file") + " is there and is no flight record\n",
            RunRefused({"--record", Path("a.file")}));
  EXPECT_EQ("HUB: --record: " + Path("site") + " is no file\n",
            RunRefused({"--record", Path("site")}));
  for (const std::string file : {"old.jsonl", "empty.jsonl", "new.jsonl"}) {
    EXPECT_TRUE(RunTaken({"--record", Path(file)})) << file;
  }
}

TEST_F(CommandLine, RefusesOneFileForLogAndRecord) {
  const std::string other = LocalFromPath(folder.Path() / "site" / ".." / "both");
  EXPECT_EQ("HUB: --log and --record: " + other + " cannot be both\n",
            RunRefused({"--log", Path("both"), "--record", other}));
}

TEST_F(CommandLine, RefusesOptionsOfTheOtherCommand) {
  EXPECT_EQ(Grammar("The following argument was not expected: --json"),
            Refused({"model", "--bin", Path("site/bin"), "--json"}));
}

TEST_F(CommandLine, RefusesAnUnknownWayToColor) {
  EXPECT_THAT(RunRefused({"--color", "blue"}), StartsWith("--color: "));
}

TEST_F(CommandLine, WithoutOptionsHasTheDefaults) {
  const Outcome outcome = Read({"run"});
  ASSERT_TRUE(outcome.request) << outcome.errors;
  EXPECT_EQ("", outcome.errors);
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
  ASSERT_TRUE(outcome.request) << outcome.errors;
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
  ASSERT_TRUE(outcome.request) << outcome.errors;
  EXPECT_EQ(ModelCommand().run, outcome.request->run);
}

TEST_F(CommandLine, ThatAsksForHelpOrTheVersionEndsWell) {
  for (const std::string option : {"--help", "--version"}) {
    const Outcome outcome = Read({option});
    EXPECT_FALSE(outcome.request);
    EXPECT_EQ(kOk, outcome.status);
    EXPECT_EQ("", outcome.errors);
  }
}

}  // namespace
