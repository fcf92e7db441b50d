// `HUB shake`: a product whose plugins find each other, with and without a missing dependency.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/system/MadeProduct.h"

using nlohmann::json;
using testing::HasSubstr;

namespace {

/// word.server publishes what text.server needs. Without a delay it is up long before, since
/// text.server waits for other.server.
class Shake : public testing::Test {
 protected:
  HubResult Run(const std::string& dependencies, const std::string& arguments) {
    return RunHub("shake --bin " + Site(dependencies).Bin() + " " + arguments);
  }

  const SiteCopy& Site(const std::string& dependencies) {
    m_product.Plugin("word.server", "init_publishes_a_service")
        .Plugin("other.server")
        .Plugin("text.server", "init_needs_a_service", DependsOn(dependencies));
    return m_product.Site();
  }

  MadeProduct m_product;
};

TEST_F(Shake, FindsTheMissingDependency) {
  const HubResult result = Run("other.server", "--runs 6 --format json");
  EXPECT_EQ(1, result.status) << result.errors;
  json missing = result.Json()["missing"];
  ASSERT_EQ(1U, missing.size()) << result.output;
  missing = missing[0];
  EXPECT_THAT(missing["again"], HasSubstr(" --delay word.server="));
  EXPECT_EQ(missing["failsBefore"]["of"], missing["failsBefore"]["runs"]);
  EXPECT_EQ(missing["wellAfter"]["of"], missing["wellAfter"]["runs"]);
  for (const char* varies : {"again", "failsBefore", "wellAfter"}) missing.erase(varies);
  EXPECT_EQ(json({{"plugin", "text.server"},
                  {"result", "failed"},
                  {"reason", "its Init returned false"},
                  {"before", {"word.server"}},
                  {"shown", true},
                  {"file", "bin/META_INFO/text.server/text.server.xml"},
                  {"line", 4}}),
            missing);
}

TEST_F(Shake, FindsNothingWhereTheDependencyIsDeclared) {
  const HubResult result = Run("other.server word.server", "--runs 4");
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_THAT(result.output,
              HasSubstr("\nno missing dependency found in 5 runs in different orders\n"));
}

TEST_F(Shake, ShowsAgainWhatItFound) {
  const HubResult result = RunHub("run --until-up --json --bin " + Site("other.server").Bin() +
                                  " --delay word.server=2000");
  EXPECT_EQ(3, result.status) << result.errors;
  EXPECT_EQ(json({{"other.server", true}, {"word.server", true}}), result.Json()["LoadState"]);
}

TEST_F(Shake, StopsOnRequestAndPrintsWhatItHas) {
  const TemporaryFolder records;
  HubProcess hub("shake --runs 100 --bin " + Site("other.server word.server").Bin() + " --keep \"" +
                 records.Path().string() + "\"");
  EXPECT_TRUE(hub.AwaitFile(records.Path() / "002.jsonl", "\"phase\":\"start\""));
  hub.RequestStop(StopKind::kInterrupt);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("; 100 runs of the plan were not made ("));
}

TEST_F(Shake, LeavesNoRecordAndNoNoteForTheNextRun) {
  const TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  const std::string bin = Site("other.server word.server").Bin();
  EXPECT_EQ(0, RunHub("shake --runs 1 --bin " + bin, settings).status);
  EXPECT_EQ(0U, RecordsBelow(state.Path()).size());
  const HubResult next = RunHub("run --until-up --bin " + bin, settings);
  EXPECT_EQ(0, next.status);
  EXPECT_THAT(next.output, testing::Not(HasSubstr("note:")));
}

TEST_F(Shake, RefusesAProductThatAnotherHubRuns) {
  const TemporaryFolder state;
  HubSettings settings;
  settings.state = state.Path();
  const std::string bin = Site("other.server").Bin();
  HubProcess hub("run --bin " + bin, settings);
  EXPECT_TRUE(hub.AwaitUp());
  const HubResult result = RunHub("shake --bin " + bin, settings);
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors, HasSubstr("HUB: another HUB runs the product in "));
  hub.RequestStop(StopKind::kInterrupt);
  hub.Wait();
}

TEST(ShakeOfAProductThatCannotRun, SaysWhy) {
  const SiteCopy site;
  site.Remove("Product.xml");
  const HubResult result = RunHub("shake --bin " + site.Bin());
  EXPECT_EQ(2, result.status);
  EXPECT_THAT(result.errors, HasSubstr("HUB: the product cannot be run in other orders: "));
}

}  // namespace
