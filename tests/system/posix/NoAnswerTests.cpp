// A product in a folder that does not respond, as on a network. Not built with a sanitizer, whose
// library must be loaded before the one that the test preloads.

#include <gtest/gtest.h>

#include <string>

#include "tests/system/MadeProduct.h"

using nlohmann::json;

namespace {

/// Settings for a HUB for which a file whose path ends in `name` blocks when it is opened.
HubSettings HangingOn(const std::string& name) {
  HubSettings settings;
  settings.environment = {
      {"LD_PRELOAD", TEV_HANGS_ON_OPEN}, {"TEV_HANGS_ON", name}, {"TEV_HANGS_AFTER", "0"}};
  return settings;
}

TEST(ProductThatDoesNotAnswer, DelaysNoStopBeforeItHasAName) {
  MadeProduct product;
  HubProcess hub(product.Plugin("a.server").Arguments("--json"), HangingOn("Product.xml"));
  EXPECT_TRUE(hub.AwaitRecord("\"head\""));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_TRUE(hub.AwaitRecord("stop-request"));
  hub.RequestStop(StopKind::kTerminate);
  const HubResult result = hub.Wait();
  EXPECT_EQ(4, result.status);
  EXPECT_EQ("left behind: Frame_Init has not returned (stopped by SIGTERM)",
            result.Json()["sentence"]);
  EXPECT_EQ(nullptr, result.Json()["product"]["name"]);
}

/// The check of the files opens this path, the frame one that ends in "bin/../Product.xml".
TEST(ProductThatDoesNotAnswer, DelaysNeitherStartNorStopByItsCheck) {
  MadeProduct product;
  const HubResult result =
      product.Plugin("a.server").RunUntilUp("--json", HangingOn("site/Product.xml"));
  EXPECT_EQ(0, result.status) << result.errors;
  EXPECT_EQ(json({{"a.server", true}}), result.Json()["LoadState"]);
}

}  // namespace
