// The log file of a run: its lines, its levels, and what happens when it is full.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

using testing::EndsWith;
using testing::HasSubstr;

namespace {

constexpr int kFixtureLines = 1200;  // of init_logs_a_mebibyte

/// The numbers of the lines that the fixture init_logs_a_mebibyte has logged, read from `files`,
/// the oldest first, and hub.log. All the files must exist.
std::vector<int> LoggedNumbers(const SiteCopy& site, const std::vector<std::string>& files) {
  std::vector<int> numbers;
  for (const std::string& file : files) {
    const std::string content = site.Read(file);
    EXPECT_NE("", content) << file;
    std::istringstream lines(content);
    const std::string text = " [fixture] line ";
    for (std::string line; std::getline(lines, line);) {
      const std::size_t at = line.find(text);
      if (at != std::string::npos) numbers.push_back(std::stoi(line.substr(at + text.size())));
    }
  }
  return numbers;
}

/// The numbers that `plugins` such plugins log one after the other.
std::vector<int> NumbersOf(int plugins) {
  std::vector<int> numbers;
  for (int i = 0; i < plugins * kFixtureLines; ++i) numbers.push_back(i % kFixtureLines + 1);
  return numbers;
}

/// Runs `plugins` plugins, one after the other, each of which logs more than a mebibyte.
void RunWithMebibytes(MadeProduct& product, int plugins) {
  product.Plugin("level0.server", "init_logs_a_mebibyte");
  for (int i = 1; i < plugins; ++i) {
    product.Plugin("level" + std::to_string(i) + ".server", "init_logs_a_mebibyte",
                   DependsOn("level" + std::to_string(i - 1) + ".server"));
  }
  const std::string log = LocalFromPath(product.Site().Path("hub.log"));
  HubProcess hub(product.Arguments("--log-size 1 --log-files 2 --log \"" + log + "\""));
  EXPECT_TRUE(hub.AwaitOutput("Up after"));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_EQ(0, hub.Wait().status);
}

TEST(Log, HasOneLineForEachCallInItsFixedForm) {
  SiteCopy site;
  const std::string file = LocalFromPath(site.Path("hub.log"));
  ASSERT_EQ(0, RunHub("model --bin " + site.Bin() + " --log \"" + file + "\"").status);
  std::istringstream lines(site.Read("hub.log"));
  const std::regex form(
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d \[[3-6]\] \[\d+\] \[[A-Za-z.]+\] .*)");
  const std::regex frame(
      R"(.* \[\d\] \[\d+\] \[platform\.PluginFrame\] \[(PluginFrame|TevModelParse)::[A-Za-z_:~]+\])"
      R"(.*\[\.\.\\\.\.\\src\\(PluginFrame|private)\\[A-Za-z]+\.cpp\(\d+\)\])");
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(std::regex_match(line, form)) << line;
    if (line.find("[platform.PluginFrame]") != std::string::npos) {
      EXPECT_TRUE(std::regex_match(line, frame)) << line;
    }
  }
  EXPECT_GT(count, 50);
}

TEST(Log, OfARunBeginsWithItsHeadAndEndsWithItsVerdict) {
  MadeProduct product;
  product.Plugin("a.server");
  const std::string file = LocalFromPath(product.Site().Path("hub.log"));
  ASSERT_EQ(0, product.RunUntilUp("--workers 3 --log \"" + file + "\"").status);
  const std::string log = product.Site().Read("hub.log");
  const std::string head = log.substr(0, log.find('\n'));
  EXPECT_TRUE(std::regex_search(
      head, std::regex(R"( \[3\] \[\d+\] \[host\] HUB \S+, frame \S+, platform \S+, pid \d+ on )")))
      << head;
  EXPECT_THAT(head, HasSubstr("product NVX 2.6.0 in "));
  EXPECT_THAT(head, EndsWith(" --workers 3 --log " + file));
  EXPECT_THAT(log, HasSubstr(" [host] up: the one plugin started\n"));
}

TEST(Log, HasWarningsAtTheirLevelAndErrorsAtTheirs) {
  MadeProduct empty;
  empty.RunUntilUp("--log \"" + LocalFromPath(empty.Site().Path("hub.log")) + "\"");
  EXPECT_TRUE(std::regex_search(
      empty.Site().Read("hub.log"),
      std::regex(R"( \[4\] \[\d+\] \[host\] .*the product starts nothing[\r\n])")));
  MadeProduct cycle;
  cycle.Plugin("a.server", "well_behaved", DependsOn("a.server"));
  HubProcess hub(cycle.Arguments("--stop-timeout 0.1 --log \"" +
                                 LocalFromPath(cycle.Site().Path("hub.log")) + "\""));
  EXPECT_TRUE(hub.AwaitOutput("it waits for ever"));
  hub.RequestStop(StopKind::kInterrupt);
  hub.Wait();
  EXPECT_TRUE(std::regex_search(cycle.Site().Read("hub.log"),
                                std::regex(R"( \[5\] \[\d+\] \[host\] .*it waits for ever)")));
}

TEST(Log, ThatIsFullIsRenamedAndLosesNoLine) {
  MadeProduct product;
  RunWithMebibytes(product, 2);
  EXPECT_EQ(NumbersOf(2), LoggedNumbers(product.Site(), {"hub.2.log", "hub.1.log", "hub.log"}));
}

TEST(Log, KeepsOnlySoManyRenamedFiles) {
  MadeProduct product;
  RunWithMebibytes(product, 4);
  const SiteCopy& site = product.Site();
  EXPECT_FALSE(std::filesystem::exists(site.Path("hub.3.log")));
  const std::vector<int> left = LoggedNumbers(site, {"hub.2.log", "hub.1.log", "hub.log"});
  const std::vector<int> all = NumbersOf(4);
  ASSERT_LT(left.size(), all.size());
  EXPECT_GT(left.size(), 1900U);  // two full files, of a mebibyte each
  EXPECT_EQ(std::vector<int>(all.end() - static_cast<std::ptrdiff_t>(left.size()), all.end()),
            left);
}

TEST(Log, OfAHigherLevelHasOnlyItsLines) {
  SiteCopy site;
  const std::string file = LocalFromPath(site.Path("hub.log"));
  ASSERT_EQ(3,
            RunHubUntilUp("--log-level 5 --bin " + site.Bin() + " --log \"" + file + "\"").status);
  std::istringstream lines(site.Read("hub.log"));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(std::regex_search(line, std::regex(R"( \[[56]\] )"))) << line;
  }
  EXPECT_GT(count, 2);
}

}  // namespace
