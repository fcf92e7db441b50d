// What case files cannot lay out: links.

#include <gtest/gtest.h>

#include <memory>

#include "workbench/check/PluginLibrary.h"
#include "workbench/check/Rule.h"

namespace {

TEST(MissingLibrary, ThatIsALinkToNothingIsSaidToBeOne) {
  CheckedProduct product;
  product.bin = "bin";
  product.files.emplace_back().kind = FileKind::kProduct;
  product.names = {"bin/a.server.dll"};
  product.model.ServerPluginDescriptions.emplace_back().ID = "a.server";
  product.graph = MakeStartGraph(product.model);
  PluginLibrary library;
  library.name = "bin/a.server.dll";
  library.state = PluginLibrary::State::kMissing;
  product.libraries = {{"a.server", std::make_shared<PluginLibrary>(library)}};
  const RuleFindings findings = RunRules({FindRule("TEV401")}, product);
  ASSERT_EQ(1U, findings.size());
  EXPECT_EQ("is a link to a file that does not exist: \"a.server\" is not started",
            findings[0].message);
}

}  // namespace
