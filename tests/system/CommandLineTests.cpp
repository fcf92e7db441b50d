// The messages with which HUB refuses a command line, its help and its version.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>

#include "reference/os/LocalText.h"
#include "tests/system/HubProcess.h"

namespace fs = std::filesystem;
using testing::StartsWith;

namespace {

constexpr char kOneOfTheProduct[] = " is one of the product's own files, or could pass for one\n";

/// A product's folder, and other files that a command line may name.
class CommandLine : public testing::Test {
 protected:
  CommandLine() {
    fs::create_directories(folder.Path() / "site" / "bin");
    folder.Write("site/Product.xml", "<ProductDescription/>");
    folder.Write("a.file", "nothing that HUB wrote");
  }

  std::string Path(const std::string& name) const { return LocalFromPath(folder.Path() / name); }

  /// The message for arguments that are refused.
  static std::string Refused(const std::string& arguments, const HubSettings& settings = {}) {
    const HubResult result = RunHub(arguments, settings);
    EXPECT_EQ(2, result.status) << arguments;
    EXPECT_EQ("", result.output) << arguments;
    return result.errors;
  }

  /// The message for options of `run` that are refused.
  std::string RunRefused(const std::string& options) const {
    return Refused("run --bin \"" + Path("site/bin") + "\" " + options);
  }
  std::string RunRefused(const std::string& option, const std::string& file) const {
    return RunRefused(option + " \"" + file + "\"");
  }

  /// Settings for a HUB whose working directory is `place`.
  HubSettings In(const std::string& place) const {
    HubSettings settings;
    settings.folder = folder.Path() / place;
    return settings;
  }

  const TemporaryFolder folder;
};

TEST_F(CommandLine, WithoutACommandIsRefused) {
  const std::string commands =
      "; there are run, check, report, why, replay, shake and model (HUB --help)\n";
  EXPECT_EQ("HUB: no command is given" + commands, Refused(""));
  EXPECT_EQ("HUB: \"fly\" is no command" + commands, Refused("fly"));
  EXPECT_EQ("HUB: \"-\" is no command" + commands, Refused("-"));
  for (const std::string option : {"--nope", "-x"}) {
    EXPECT_EQ("HUB: \"" + option + "\" stands where the command belongs" + commands,
              Refused(option));
  }
  EXPECT_EQ(
      "HUB: \"--bin\" stands before the command: first run, then its options (HUB run --help)\n",
      Refused("--bin x run"));
}

TEST_F(CommandLine, WithAWordThatNothingTakesIsRefused) {
  EXPECT_EQ("HUB: \"--nope\" is no option of run (HUB run --help)\n", Refused("run --nope 1"));
  EXPECT_EQ("HUB: \"model\" belongs to no option of run (HUB run --help)\n", Refused("run model"));
  EXPECT_EQ("HUB: \"x\" belongs to no option of run (HUB run --help)\n", Refused("run -- x"));
}

TEST_F(CommandLine, WithAValueTooFewOrTooManyIsRefused) {
  EXPECT_EQ("HUB: --log needs a value: --log FILE\n", Refused("run --log"));
  EXPECT_EQ("HUB: --log needs a value, and \"--json\" is an option\n", RunRefused("--log --json"));
  EXPECT_EQ("HUB: --bin is given 2 times\n", Refused("run --bin a --bin b"));
  EXPECT_EQ("HUB: --no-record takes no value\n", RunRefused("--no-record=x"));
}

TEST_F(CommandLine, WithAnEmptyPathIsRefused) {
  EXPECT_EQ("HUB: --bin: \"\" is no path\n", Refused("run --bin \"\""));
  EXPECT_EQ("HUB: --log: \"\" is no path\n", RunRefused("--log \"\""));
  EXPECT_EQ("HUB: --record: \"\" is no path\n", RunRefused("--record \"\""));
}

TEST_F(CommandLine, WithTwoOptionsThatExcludeEachOtherIsRefused) {
  EXPECT_EQ("HUB: --json and --events: only one of them\n", RunRefused("--json --events"));
  EXPECT_EQ("HUB: --record and --no-record: only one of them\n",
            RunRefused("--no-record --record", Path("new.jsonl")));
  EXPECT_EQ("HUB: --report and --no-record: the report is made of the flight record\n",
            RunRefused("--no-record --report", Path("new.html")));
}

TEST_F(CommandLine, WithSecondsThatAreNoneIsRefused) {
  for (const std::string seconds : {"soon", "-1", "nan", "inf", "1s"}) {
    EXPECT_EQ("HUB: --seconds: \"" + seconds + "\" is no number of seconds from 0 up\n",
              RunRefused("--seconds " + seconds));
  }
  for (const std::string option : {"--start-timeout", "--stop-timeout"}) {
    EXPECT_EQ("HUB: " + option + ": \"-1\" is no number of seconds from 0 up\n",
              RunRefused(option + " -1"));
  }
}

TEST_F(CommandLine, WithANumberOutOfItsBoundsIsRefused) {
  const auto bounds = [this](const std::string& option, const std::string& number,
                             const std::string& least, const std::string& most) {
    EXPECT_EQ("HUB: " + option + ": \"" + number + "\" is no whole number from " + least + " to " +
                  most + "\n",
              RunRefused(option + " " + number));
  };
  bounds("--workers", "0", "1", "10000");
  bounds("--workers", "10001", "1", "10000");
  bounds("--log-level", "7", "0", "6");
  bounds("--log-level", "-1", "0", "6");
  bounds("--log-size", "0", "1", "1048576");
  bounds("--log-files", "0", "1", "1000");
  bounds("--log-files", "1001", "1", "1000");
  bounds("--module", "two", "-2147483648", "2147483647");
}

TEST_F(CommandLine, WithAFolderThatIsNoneIsRefused) {
  EXPECT_EQ("HUB: --bin: " + Path("nowhere") + " does not exist\n",
            Refused("run --bin \"" + Path("nowhere") + "\""));
  EXPECT_EQ("HUB: --bin: " + Path("a.file") + " is no folder\n",
            Refused("model --bin \"" + Path("a.file") + "\""));
}

TEST_F(CommandLine, WithTheProductsFolderInsteadOfThatOfTheExecutablesIsRefused) {
  fs::create_directories(folder.Path() / "site" / "bin" / "META_INFO");
  for (const std::string command : {"check", "run", "model"}) {
    EXPECT_EQ("HUB: --bin: site has no META_INFO; is --bin " +
                  LocalFromPath(fs::path("site") / "bin") + " meant?\n",
              Refused(command + " --bin site", In(".")));
  }
  EXPECT_EQ("HUB: --against: site has no META_INFO; is --against " +
                LocalFromPath(fs::path("site") / "bin") + " meant?\n",
            Refused("check --against site --bin site/bin", In(".")));
}

TEST_F(CommandLine, ThatWouldWriteOverTheProductsFilesIsRefused) {
  for (const std::string name :
       {"site/Product.xml", "site/bin/META_INFO/new.DATA", "site/bin/a.server.dll",
        "site/bin/HUB.exe", "site/bin/lib.so", "site/bin/libz.so.1"}) {
    for (const std::string option : {"--log", "--record"}) {
      EXPECT_EQ("HUB: " + option + ": " + Path(name) + kOneOfTheProduct,
                RunRefused(option, Path(name)));
    }
  }
}

TEST_F(CommandLine, ThatNamesTheProductsFilesByRelativePathsIsRefused) {
  const auto expectRefused = [this](const std::string& place, const std::string& bin,
                                    const std::string& file) {
    for (const std::string option : {"--log", "--record"}) {
      EXPECT_EQ("HUB: " + option + ": " + file + kOneOfTheProduct,
                Refused("run --bin \"" + bin + "\" " + option + " " + file, In(place)));
    }
  };
  expectRefused("site", Path("site/bin"), "new.xml");
  expectRefused("site", "bin", "new.xml");
  expectRefused("site/bin", ".", "../new.data");
  expectRefused("", "site/bin/", "site/nowhere/../new.dll");
  expectRefused("", "site/bin", Path("site/new.so"));
}

TEST_F(CommandLine, ThatWouldWriteOverTheFilesAroundHubItselfIsRefused) {
  HubSettings settings = In("site");
  settings.program = CopyHubWithoutFrame(folder.Path() / "site" / "bin");
  EXPECT_EQ(std::string("HUB: --log: new.xml") + kOneOfTheProduct,
            Refused("run --log new.xml", settings));
}

TEST_F(CommandLine, WithARecordInPlaceOfSomethingElseIsRefused) {
  EXPECT_EQ("HUB: --record: " + Path("a.file") + " is there and is no flight record\n",
            RunRefused("--record", Path("a.file")));
  EXPECT_EQ("HUB: --record: " + Path("site") + " is a directory\n",
            RunRefused("--record", Path("site")));
}

TEST_F(CommandLine, WithOneFileForLogAndRecordIsRefused) {
  const std::string other = LocalFromPath(folder.Path() / "site" / ".." / "both");
  EXPECT_EQ("HUB: --log and --record: " + other + " cannot be both\n",
            RunRefused("--log \"" + Path("both") + "\" --record", other));
  const std::string run = "run --bin site/bin ";
  EXPECT_EQ("HUB: --log and --record: " + Path("both") + " cannot be both\n",
            Refused(run + "--log both --record \"" + Path("both") + "\"", In("")));
  EXPECT_EQ("HUB: --record and --report: " + Path("both") + " cannot be both\n",
            RunRefused("--record \"" + Path("both") + "\" --report", Path("both")));
  EXPECT_EQ("HUB: --report: the folder " + Path("gone") + " does not exist\n",
            RunRefused("--report", Path("gone/page.html")));
  EXPECT_EQ("HUB: --log and --record: both cannot be both\n",
            Refused(run + "--log \"" + Path("both") + "\" --record both", In("")));
}

TEST_F(CommandLine, WithALogThatCannotBeOpenedIsRefused) {
  EXPECT_THAT(RunRefused("--log", Path("a.file/hub.log")),
              StartsWith("HUB: the log cannot be written to " + Path("a.file/hub.log") + ": "));
}

TEST_F(CommandLine, WithAnOptionOfTheOtherCommandIsRefused) {
  EXPECT_EQ("HUB: \"--json\" is no option of model (HUB model --help)\n",
            Refused("model --bin \"" + Path("site/bin") + "\" --json"));
}

TEST_F(CommandLine, WithAnUnknownWayToColorIsRefused) {
  EXPECT_EQ("HUB: --color: \"blue\" is neither auto, always nor never\n",
            RunRefused("--color blue"));
}

/// The pages in the folder help are what `HUB --help` and `HUB COMMAND --help` print; `make docs`
/// writes them anew.
TEST_F(CommandLine, OfHelpOrTheVersionPrintsThatInEightyColumns) {
  EXPECT_EQ("HUB " TEV_VERSION "\n", RunHub("--version").output);
  const std::pair<std::string, std::string> pages[] = {
      {"--help", "HUB"},           {"run --help", "run"},    {"check --help", "check"},
      {"report --help", "report"}, {"why --help", "why"},    {"replay --help", "replay"},
      {"shake --help", "shake"},   {"model --help", "model"}};
  for (const auto& [arguments, name] : pages) {
    const HubResult result = RunHub(arguments);
    EXPECT_EQ(0, result.status);
    std::ifstream page(TEV_HELP_PAGES "/" + name + ".txt");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(page), {}), result.output) << arguments;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
  }
}

}  // namespace
