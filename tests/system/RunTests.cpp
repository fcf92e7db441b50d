// The sample product, run whole through HUB.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "reference/os/LocalText.h"
#include "tests/system/HubProcess.h"

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;

namespace {

/// What the timing table says of each plugin: its name to "Init OK", "Init Failed", "Load Failed".
std::map<std::string, std::string> Outcomes(const json& run) {
  std::map<std::string, std::string> outcomes;
  for (const json& line : run["Timing"]) {
    const std::string text = line["text"];
    const std::size_t end = text.find("] ");
    if (text[0] == '[' && end != std::string::npos) {
      outcomes[text.substr(1, end - 1)] = text.substr(end + 2);
    }
  }
  return outcomes;
}

/// A product of plugins that are copies of one well-behaved library under other names.
class MadeProduct {
 public:
  void Plugin(const std::string& id, const std::string& inner = "") {
    Describe(id, inner);
    std::filesystem::copy_file(TEV_FIXTURE_OK, m_site.Path("bin/" + id + ".dll"),
                               std::filesystem::copy_options::overwrite_existing);
  }

  void Library(const std::string& id, const std::string& file) {
    Describe(id, "");
    std::filesystem::copy_file(file, m_site.Path("bin/" + id + ".dll"),
                               std::filesystem::copy_options::overwrite_existing);
  }

  void BrokenLibrary(const std::string& id, const std::string& content) {
    Describe(id, "");
    m_site.Write("bin/" + id + ".dll", content);
  }

  json Run(const std::string& seconds = "1") {
    Finish();
    const HubResult result = RunHub("run --json --bin " + m_site.Bin() + " --seconds " + seconds);
    EXPECT_EQ(0, result.status) << result.errors;
    return result.Json();
  }

  const SiteCopy& Site() {
    Finish();
    return m_site;
  }

 private:
  void Describe(const std::string& id, const std::string& inner) {
    m_plugins += "<Plugin ID='" + id + "'/>";
    m_site.Write("bin/META_INFO/" + id + "/" + id + ".xml",
                 "<Plugin><Type>2</Type><ID>" + id + "</ID>" + inner + "</Plugin>");
  }

  void Finish() {
    m_site.Write("Product.xml",
                 "<ProductDescription><Product>NVX</Product><Version>2.6.0</Version>"
                 "<Plugins>" +
                     m_plugins + "</Plugins></ProductDescription>");
    m_site.Write("bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers/>");
    m_site.Remove("bin/TevAddons");
  }

  SiteCopy m_site;
  std::string m_plugins;
};

/// The library made over for a machine that is not this one.
std::string ForAnotherMachine(const std::string& library) {
  std::ostringstream file;
  file << std::ifstream(library, std::ios::binary).rdbuf();
  std::string content = file.str();
  const bool isElf = content.compare(1, 3, "ELF") == 0;
  // Where its header names the machine: S/390 here, ARM64 there.
  const std::size_t machine = isElf ? 18 : content.find(std::string("PE\0\0", 4)) + 4;
  content[machine] = isElf ? '\x16' : '\x64';
  content[machine + 1] = isElf ? '\0' : '\xAA';
  return content;
}

TEST(SampleProduct, RunsItsWholeLifeAndReportsIt) {
  const HubResult result = RunHub("run --json --bin \"" TEV_SITE "/bin\" --seconds 4");
  ASSERT_EQ(0, result.status) << result.errors;
  const json run = result.Json();
  EXPECT_EQ(0, run["Frame_Init"]);
  EXPECT_EQ(0, run["Frame_Start"]);
  EXPECT_EQ(true, run["CallbackResult"]);
  EXPECT_EQ(json::array({""}), run["Notified"]);

  std::multiset<std::string> results;
  std::set<std::string> started;
  for (const auto& plugin : Outcomes(run)) {
    results.insert(plugin.second);
    if (plugin.second == "Init OK") started.insert(plugin.first);
  }
  EXPECT_EQ(1U, results.count("Init Failed"));
  EXPECT_EQ(1U, results.count("Load Failed"));
  EXPECT_GE(results.count("Init OK"), 12U);

  std::set<std::string> loadState;
  for (const auto& plugin : run["LoadState"].items()) loadState.insert(plugin.key());
  EXPECT_EQ(started, loadState);
  EXPECT_EQ(started.size() + 1, run["Handles"].size());  // the one whose Init failed is loaded too
}

TEST(SampleProduct, ShowsTheFailingAndTheMissingPluginPlainly) {
  const HubResult result = RunHub("run --bin \"" TEV_SITE "/bin\" --seconds 4");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("INIT FAILED"), HasSubstr("NOT LOADED"), HasSubstr(" plugins"),
                    HasSubstr("1 failed in Init, 1 not loaded"), HasSubstr("waiting for")));
}

TEST(Run, WithoutAProductFailsWithOneSentenceThatNamesTheFile) {
  SiteCopy site;
  site.Remove("Product.xml");
  const HubResult result = RunHub("run --json --bin " + site.Bin() + " --seconds 1");
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("HUB: " + LocalFromPath(site.Path("Product.xml").make_preferred()) +
                " does not exist, and there is no Product.data beside it that could stand in; the "
                "product cannot be read\n",
            result.errors);
  const json expected = {{"Frame_Init", -1},          {"Frame_Start", nullptr},
                         {"CallbackResult", nullptr}, {"LoadState", nullptr},
                         {"Handles", json::array()},  {"Timing", json::array()},
                         {"Notified", json::array()}};
  EXPECT_EQ(expected, result.Json());
}

TEST(Run, BrokenLibrariesAreReportedAndHoldNothingBack) {
  MadeProduct product;
  product.BrokenLibrary("text.server", "this is no library");
  product.BrokenLibrary("empty.server", "");
  product.BrokenLibrary("foreign.server", ForAnotherMachine(TEV_FIXTURE_OK));
  product.Library("throws.server", TEV_FIXTURE_THROWS);
  product.Library("bare.server", TEV_FIXTURE_WITHOUT_ENTRIES);
  product.Plugin("after.server",
                 "<DependencyList><Plugin ID='text.server'/><Plugin ID='throws.server'/>"
                 "</DependencyList>");
  const json run = product.Run("2");
  const std::map<std::string, std::string> expected = {
      {"after.server", "Init OK"},     {"bare.server", "Init Failed"},
      {"empty.server", "Load Failed"}, {"foreign.server", "Load Failed"},
      {"text.server", "Load Failed"},  {"throws.server", "Init Failed"}};
  EXPECT_EQ(expected, Outcomes(run));
  EXPECT_EQ(json({{"after.server", true}}), run["LoadState"]);
  EXPECT_EQ(json({"after.server", "bare.server", "throws.server"}), run["Handles"]);
}

#ifdef TEV_FIXTURE_NEEDS_A_SYMBOL  // Windows' linker makes no such library
TEST(Run, APluginThatNeedsASymbolNobodyOffersIsNotLoadedAndTheSymbolIsNamed) {
  MadeProduct product;
  product.Library("needs.server", TEV_FIXTURE_NEEDS_A_SYMBOL);
  const HubResult result = RunHub("run --bin " + product.Site().Bin() + " --seconds 1");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output, AllOf(HasSubstr("NOT LOADED"), HasSubstr("WhatNobodyDefines")));
}
#endif

TEST(Run, PluginsInACircleAreWaitedForUntilASecondStop) {
  MadeProduct product;
  product.Plugin("a.server", "<DependencyList><Plugin ID='b.server'/></DependencyList>");
  product.Plugin("b.server", "<DependencyList><Plugin ID='a.server'/></DependencyList>");
  HubProcess hub("run --bin " + product.Site().Bin());
  std::this_thread::sleep_for(std::chrono::seconds(2));
  hub.AskToStop(StopWish::kInterrupt);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  hub.AskToStop(StopWish::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.output, HasSubstr("waiting for the dependencies of a.server, b.server"));
  EXPECT_THAT(result.errors, HasSubstr("stopped a second time"));
}

TEST(Run, APluginThatHangsInInitIsNamedAndLeftBehind) {
  MadeProduct product;
  product.Library("hangs.server", TEV_FIXTURE_HANGS);
  const HubResult result = RunHub("run --bin " + product.Site().Bin() + " --seconds 2");
  EXPECT_EQ(0, result.status);
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("waiting for hangs.server (1."), HasSubstr("NEVER RETURNED")));
  EXPECT_EQ("HUB: a plugin never returned; leaving without it\n", result.errors);
}

TEST(Run, StopsInOrderWhenAPersonOrTheSystemAsks) {
  for (const StopWish wish : {StopWish::kInterrupt, StopWish::kTerminate}) {
    SiteCopy site;
    const std::string log = LocalFromPath(site.Path("hub.log"));
    HubProcess hub("run --json --bin " + site.Bin() + " --log \"" + log + "\"");
    std::this_thread::sleep_for(std::chrono::seconds(4));
    hub.AskToStop(wish);
    const HubResult result = hub.Wait();
    EXPECT_EQ(0, result.status) << result.errors;
    EXPECT_EQ(true, result.Json()["CallbackResult"]);
    EXPECT_THAT(site.Read("hub.log"), HasSubstr("!Frame_UnInit end!"));
  }
}

TEST(Run, InAFolderWithBlanksAndLettersBeyondAsciiIsTheSame) {
  // A letter of the local code page, which is two bytes long on systems that speak UTF-8.
  SiteCopy site(PathFromLocal(LocalFromWide(L"my site \u00e9 (2)")));
  const HubResult result = RunHub("run --json --bin " + site.Bin() + " --seconds 4");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_GE(result.Json()["LoadState"].size(), 12U);
  site.Remove("Product.xml");
  const HubResult failed = RunHub("model --bin " + site.Bin());
  EXPECT_EQ("HUB: " + LocalFromPath(site.Path("Product.xml").make_preferred()) +
                " does not exist, and there is no Product.data beside it that could stand in; the "
                "product cannot be read\n",
            failed.errors);
}

TEST(Run, AProductWithoutPluginsComesUpAndGoesDown) {
  MadeProduct product;
  const json run = product.Run("1");
  EXPECT_EQ(json::object(), run["LoadState"]);
  EXPECT_EQ(json::array(), run["Handles"]);
  EXPECT_EQ(json({{{"text", "Plugins need to init"}, {"ms", -1}}}),
            json::array({run["Timing"].back()}));
}

TEST(Log, HasOneLineForEachCallInItsFixedForm) {
  SiteCopy site;
  const std::string file = LocalFromPath(site.Path("hub.log"));
  ASSERT_EQ(0, RunHub("model --bin " + site.Bin() + " --log \"" + file + "\"").status);
  std::istringstream lines(site.Read("hub.log"));
  const std::regex form(
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d \[[3-6]\] \[\d+\] \[[A-Za-z.]+\] .*)");
  const std::regex frame(
      R"(.* \[\d\] \[\d+\] \[platform\.PluginFrame\] \[(PluginFrame|TevModelParse)::[A-Za-z_:~]+\].*)"
      R"(\[\.\.\\\.\.\\src\\(PluginFrame|private)\\[A-Za-z]+\.cpp\(\d+\)\])");
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_TRUE(std::regex_match(line, form)) << line;
    if (line.find("[platform.PluginFrame]") != std::string::npos) {
      EXPECT_TRUE(std::regex_match(line, frame)) << line;
    }
  }
  EXPECT_GT(count, 50);
}

TEST(CommandLine, WrongUseEndsWithTwo) {
  EXPECT_EQ(2, RunHub("").status);
  EXPECT_EQ(2, RunHub("fly").status);
  EXPECT_EQ(2, RunHub("run --seconds soon").status);
  EXPECT_EQ(2, RunHub("model --json").status);
  EXPECT_EQ(0, RunHub("--help").status);
}

}  // namespace
