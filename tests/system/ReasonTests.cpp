// Every state that is not well has a reason that says what to do.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

namespace fs = std::filesystem;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

/// "state: reason" of the only plugin of a product, after a whole run.
std::string Outcome(MadeProduct& product) {
  const HubResult result = product.Run("--json --seconds 0.5");
  EXPECT_EQ(3, result.status) << result.errors;
  const json plugin = result.Json()["plugins"][0];
  return plugin["state"].get<std::string>() + ": " + plugin["reason"].get<std::string>();
}

std::string OutcomeOf(const std::string& fixture) {
  MadeProduct product;
  return Outcome(product.Plugin("a.server", fixture));
}

std::string Local(const fs::path& path) {
  fs::path preferred = path;
  return LocalFromPath(preferred.make_preferred());
}

TEST(Reason, OfAFailedInitIsWhatItDid) {
  EXPECT_EQ("init-failed: its Init returned false", OutcomeOf("init_fails"));
  EXPECT_EQ("init-failed: its Init threw: the disk is on fire", OutcomeOf("init_throws"));
  EXPECT_EQ("init-failed: its Init threw something that is no exception object",
            OutcomeOf("init_throws_no_exception"));
  EXPECT_EQ("init-failed: its library exports no Init; stop: its library exports no UnInit",
            OutcomeOf("without_entries"));
}

TEST(Reason, OfAFailedInitHasThePluginsOwnLastWords) {
  EXPECT_EQ("init-failed: its Init returned false: [fixture] the licence is\\x0anot valid",
            OutcomeOf("init_fails_with_a_word"));
}

TEST(Reason, OfAnInitUnderAMangledNameNamesIt) {
  EXPECT_EQ(
      "init-failed: its library exports no Init; it is exported as _Z4Initv: is extern \"C\" "
      "missing?; stop: its library exports no UnInit",
      OutcomeOf("init_is_mangled"));
}

TEST(Reason, OfARefusedStopIsWhichWayItWasRefused) {
  EXPECT_EQ("stop-refused: its UnInit returned false", OutcomeOf("uninit_refuses"));
  EXPECT_EQ("stop-refused: its UnInit threw: the door is stuck", OutcomeOf("uninit_throws"));
  EXPECT_EQ("stop-refused: its library exports no UnInit", OutcomeOf("without_uninit"));
}

TEST(Reason, OfAMissingLibraryNamesTheFile) {
  MadeProduct product;
  product.Plugin("a.server");
  product.Site().Remove("bin/a.server.dll");
  const std::string outcome = Outcome(product);
  EXPECT_THAT(outcome, HasSubstr("not-loaded: "));
  EXPECT_THAT(outcome, HasSubstr("a.server.dll"));
}

TEST(Reason, OfATextInPlaceOfALibrarySaysSo) {
  MadeProduct product;
  const std::string outcome = Outcome(product.BrokenLibrary("a.server", "this is no library"));
  EXPECT_THAT(outcome, AllOf(HasSubstr("not-loaded: "), HasSubstr("a.server.dll")));
}

TEST(UnreadableProduct, NamesEveryMissingFileWithWhoListsIt) {
  MadeProduct product;
  product.Plugin("a.server").Plugin("b.server").Plugin("c.server");
  const SiteCopy& site = product.Site();
  site.Remove("bin/META_INFO/a.server");
  site.Remove("bin/META_INFO/c.server");
  const HubResult result = RunHub("run --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr("a.server.xml does not exist"));
  EXPECT_THAT(result.errors, HasSubstr("c.server.xml does not exist"));
  EXPECT_THAT(result.errors, Not(HasSubstr("b.server.xml")));
  EXPECT_THAT(result.errors, HasSubstr("Product.xml:1 lists \"a.server\""));
  EXPECT_THAT(result.errors, HasSubstr("Product.xml:3 lists \"c.server\""));
}

TEST(UnreadableProduct, WithAPluginWithoutAnIdNamesItsLine) {
  MadeProduct product;
  product.Plugin("a.server");
  const SiteCopy& site = product.Site();
  site.Write("Product.xml",
             "<ProductDescription>\n<Plugins>\n<Plugin ID='a.server'/>\n<Plugin/>\n</Plugins>"
             "</ProductDescription>");
  const HubResult result = RunHub("run --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  EXPECT_THAT(result.errors, HasSubstr(Local(site.Path("Product.xml")) + ":4"));
}

TEST(ProductThatReadsAsEmpty, IsNeverSimplyUp) {
  const std::vector<std::pair<std::string, std::string>> products = {
      {"<ProductDescription>\n<Plugins>\n</ProductDescription>", "not well-formed"},
      {"<Products/>", "<Products>"},
      {"<ProductDescription xmlns='urn:x'/>", "namespace"}};
  for (const auto& one : products) {
    SiteCopy site;
    site.Write("Product.xml", one.first);
    const HubResult result = RunHub("run --json --seconds 0.5 --bin " + site.Bin());
    EXPECT_EQ(3, result.status) << one.first;
    const json run = result.Json();
    EXPECT_EQ("degraded", run["status"]);
    EXPECT_THAT(run["findings"][0]["text"].get<std::string>(),
                AllOf(HasSubstr("Product.xml"), HasSubstr(one.second)));
  }
}

TEST(ProductThatReadsAsEmpty, LeavesTheParsersWordsInTheLogWithTheFileThatWasRead) {
  SiteCopy site;
  site.Remove("Product.xml");
  site.Write("Product.data", "<ProductDescription>\n<Plugins>\n</ProductDescription>");
  const std::string log = LocalFromPath(site.Path("hub.log"));
  EXPECT_EQ(3, RunHub("run --seconds 0.5 --bin " + site.Bin() + " --log \"" + log + "\"").status);
  EXPECT_THAT(site.Read("hub.log"), HasSubstr("Product.data:3: Opening and ending tag mismatch"));
}

TEST(UnreadableProduct, WithATextTooLargeForTheParserHasTheFramesOwnWords) {
  SiteCopy site;
  site.Write("Product.xml", "<ProductDescription><Product>" + std::string(12'000'000, 'x') +
                                "\xc3\xa9</Product></ProductDescription>");
  const HubResult result = RunHub("run --json --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("failed: Frame_Init ended with an exception: std::bad_alloc",
            result.Json()["sentence"]);
}

TEST(DroppedPlugin, OfAnAddonWhoseDescriptionIsMissingDegradesTheRun) {
  SiteCopy site;
  site.Remove("bin/META_INFO/parking.server");
  const HubResult result = RunHub("run --json --seconds 4 --bin " + site.Bin());
  EXPECT_EQ(3, result.status);
  std::string findings;
  const json run = result.Json();
  for (const json& finding : run["findings"]) findings += finding["text"];
  EXPECT_THAT(findings, HasSubstr("parking.server"));
}

}  // namespace
