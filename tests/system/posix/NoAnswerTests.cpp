// A product in a folder that does not respond, as on a network. Not built with a sanitizer, whose
// library must be loaded before the one that the test preloads.

#include <gtest/gtest.h>

#include <string>

#include "tests/system/MadeProduct.h"

namespace {

/// Runs a product whose Product.xml can be opened `readings` times and then blocks. Stops it by two
/// requests, the first one as soon as the record contains `text`.
HubResult RunUntilNoAnswer(int readings, const std::string& text) {
  MadeProduct product;
  HubSettings settings;
  settings.environment = {{"LD_PRELOAD", TEV_HANGS_ON_OPEN},
                          {"TEV_HANGS_ON", "Product.xml"},
                          {"TEV_HANGS_AFTER", std::to_string(readings)}};
  HubProcess hub(product.Plugin("a.server").Arguments("--json"), settings);
  EXPECT_TRUE(hub.AwaitRecord(text));
  hub.RequestStop(StopKind::kTerminate);
  EXPECT_TRUE(hub.AwaitRecord("stop-request"));
  hub.RequestStop(StopKind::kTerminate);
  return hub.Wait();
}

std::string Sentence(const std::string& what) {
  return "left behind: " + what + " has not returned (stopped by SIGTERM)";
}

TEST(ProductThatDoesNotAnswer, DelaysNoStopBeforeItHasAName) {
  const HubResult result = RunUntilNoAnswer(0, "\"head\"");
  EXPECT_EQ(4, result.status);
  EXPECT_EQ(Sentence("Frame_Init"), result.Json()["sentence"]);
  EXPECT_EQ(nullptr, result.Json()["product"]["name"]);
}

TEST(ProductThatDoesNotAnswer, DelaysNoStopWhileItsFilesAreRead) {
  const HubResult result = RunUntilNoAnswer(2, "phase-end");
  EXPECT_EQ(4, result.status);
  EXPECT_EQ(Sentence("the reading of the product's files"), result.Json()["sentence"]);
}

}  // namespace
