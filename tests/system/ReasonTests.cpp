// Every failed state has a reason that says what to do.

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>

#include "reference/os/LocalText.h"
#include "tests/system/MadeProduct.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

/// "state: reason" of the only plugin of a product, after a complete run.
std::string Outcome(MadeProduct& product) {
  const HubResult result = product.RunUntilUp("--json");
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

/// The path of a.server's library as the frame writes it: with slashes on every system.
std::string Library(MadeProduct& product) {
  std::string file = LocalFromPath(product.Site().Path("bin/a.server.dll"));
  std::replace(file.begin(), file.end(), '\\', '/');
  return file;
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
  EXPECT_EQ("not-loaded: " + Library(product) + " does not exist", Outcome(product));
}

TEST(Reason, OfWhatLiesInPlaceOfALibrarySaysWhatItIs) {
  MadeProduct text;
  text.BrokenLibrary("a.server", "this is no library");
  EXPECT_EQ("not-loaded: " + Library(text) + " is no library: neither ELF nor PE", Outcome(text));
  MadeProduct empty;
  empty.BrokenLibrary("a.server", "");
  EXPECT_EQ("not-loaded: " + Library(empty) + " is empty", Outcome(empty));
  MadeProduct folder;
  folder.Plugin("a.server");
  folder.Site().Remove("bin/a.server.dll");
  fs::create_directory(folder.Site().Path("bin/a.server.dll"));
  EXPECT_EQ("not-loaded: " + Library(folder) + " is a directory", Outcome(folder));
}

/// The message for a product without the description of `id`, which Product.xml lists in line
/// `line`.
std::string MissingDescription(const SiteCopy& site, const std::string& id, int line) {
  return Local(site.Path("Product.xml")) + ":" + std::to_string(line) + ": \"" + id +
         "\" has no description: bin/META_INFO/" + id + "/" + id +
         ".xml does not exist: the frame refuses the product, and nothing starts";
}

TEST(UnreadableProduct, NamesEveryMissingFileWithWhoListsIt) {
  MadeProduct product;
  product.Plugin("first.one").Plugin("second.one").Plugin("third.one");
  const SiteCopy& site = product.Site();
  site.Remove("bin/META_INFO/first.one");
  site.Remove("bin/META_INFO/third.one");
  const HubResult result = RunHub("run --json --bin " + site.Bin());
  EXPECT_EQ(1, result.status);
  const std::string first = MissingDescription(site, "first.one", 1);
  const std::string second = MissingDescription(site, "third.one", 3);
  EXPECT_EQ("HUB: " + first + "\nHUB: " + second + "\n", result.errors);
  const json run = result.Json();
  EXPECT_EQ("failed: " + first + " (and 1 more)", run["sentence"]);
  EXPECT_EQ(json::array({{{"severity", "error"}, {"text", first}},
                         {{"severity", "error"}, {"text", second}}}),
            run["findings"]);
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
  EXPECT_EQ("HUB: " + Local(site.Path("Product.xml")) +
                ":4: <Plugin> without an ID: its description would be bin/META_INFO/.xml, which "
                "does not exist: the frame refuses the product, and nothing starts\n",
            result.errors);
}

TEST(ProductThatReadsAsEmpty, IsNeverSimplyUp) {
  const std::string lost =
      "the whole file reads as empty: no plugin and no sub platform is started, and no addon is "
      "read";
  const std::vector<std::pair<std::string, std::string>> products = {
      {"<ProductDescription>\n<Plugins>\n</ProductDescription>",
       ":3: not well-formed: Opening and ending tag mismatch: Plugins line 2 and "
       "ProductDescription; " +
           lost},
      {"<Products/>", ":1: the root element is <Products>, not <ProductDescription>: " + lost},
      {"<ProductDescription xmlns='urn:x'/>",
       ":1: <ProductDescription> is in the namespace \"urn:x\", and the frame reads only elements "
       "without a namespace: " +
           lost + "; remove the namespace from the root element"}};
  for (const auto& one : products) {
    SiteCopy site;
    site.Write("Product.xml", one.first);
    const HubResult result = RunHubUntilUp("--json --bin " + site.Bin());
    EXPECT_EQ(3, result.status) << one.first;
    const json run = result.Json();
    EXPECT_EQ("degraded", run["status"]);
    EXPECT_EQ(Local(site.Path("Product.xml")) + one.second, run["findings"][0]["text"]);
  }
}

TEST(ProductThatReadsAsEmpty, HasTheParsersMessageInTheLog) {
  SiteCopy site;
  site.Remove("Product.xml");
  site.Write("Product.data", "<ProductDescription>\n<Plugins>\n</ProductDescription>");
  const std::string log = LocalFromPath(site.Path("hub.log"));
  EXPECT_EQ(3, RunHubUntilUp("--bin " + site.Bin() + " --log \"" + log + "\"").status);
  EXPECT_TRUE(std::regex_search(
      site.Read("hub.log"),
      std::regex(
          R"( \[4\] \[\d+\] \[xml\] [^\n]*Product\.data:3: Opening and ending tag mismatch: )"
          R"(Plugins line 2 and ProductDescription\n)")));
}

TEST(UnreadableProduct, WithTooLargeATextHasTheFramesMessage) {
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
  const HubResult result = RunHubUntilUp("--json --bin " + site.Bin());
  EXPECT_EQ(3, result.status);
  const std::string text =
      Local(site.Path("bin/TevAddons/Parking/Parking.xml")) +
      ":38: \"parking.server\" has no description: bin/META_INFO/parking.server/parking.server.xml "
      "does not exist: the addon \"Parking\" is skipped, so 5 plugins are not added to the product";
  EXPECT_EQ(json::array({{{"severity", "error"}, {"text", text}}}), result.Json()["findings"]);
}

}  // namespace
