#include "host/EarlyCheck.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Latch.h"
#include "tests/support/ProductTree.h"

namespace fs = std::filesystem;

namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

class EarlyCheckOfProduct : public testing::Test {
 protected:
  EarlyCheckOfProduct() { tree.Product("a: b:"); }

  std::string Path(const std::string& file) const {
    return (fs::canonical(tree.ExeDirectory()).parent_path() / file).make_preferred().string();
  }

  /// What is found when the frame refuses the product, or hands over `model`.
  EarlyFindings Found(std::optional<HandedOver> model = std::nullopt) const {
    EarlyCheck check(tree.ExeDirectory(), 1);
    check.Continue(std::move(model));
    return check.Wait();
  }

  static Texts Errors(const EarlyFindings& found) {
    Texts texts;
    for (const Finding& finding : found.findings) {
      EXPECT_EQ(Severity::kError, finding.severity);
      texts.push_back(finding.text);
    }
    return texts;
  }

  const ProductTree tree;
};

TEST_F(EarlyCheckOfProduct, FindsNothingInAGoodOne) {
  EXPECT_EQ(Texts(), Errors(Found()));
  EXPECT_EQ(Texts(), Found().refusals);
}

TEST_F(EarlyCheckOfProduct, NamesEveryFileForWhichTheFrameRefusesIt) {
  tree.Remove("bin/META_INFO/b");
  tree.Remove("bin/META_INFO/Portal.xml");
  const EarlyFindings found = Found();
  EXPECT_EQ((Texts{Path("Product.xml") +
                       ":1: \"b\" has no description: "
                       "bin/META_INFO/b/b.xml does not exist: the frame refuses the product, and "
                       "nothing starts",
                   Path("bin/META_INFO/Portal.xml") +
                       ": does not exist, and there is no Portal.data beside it that could stand "
                       "in: the frame refuses the product, and nothing starts"}),
            Errors(found));
  EXPECT_EQ(Errors(found), found.refusals);
}

TEST_F(EarlyCheckOfProduct, NamesASecondSectionForWhichTheFrameRefusesIt) {
  tree.Write("Product.xml",
             "<ProductDescription>\n<Plugins><Plugin ID='a'/></Plugins>\n"
             "<Plugins><Plugin ID='b'/></Plugins>\n</ProductDescription>");
  const Texts refusals = Found().refusals;
  ASSERT_EQ(1U, refusals.size());
  EXPECT_EQ(0U, refusals[0].find(Path("Product.xml") + ":3: a second <Plugins>: ")) << refusals[0];
}

TEST_F(EarlyCheckOfProduct, NamesAnEmptyDescriptionForWhichTheFrameRefusesIt) {
  tree.Write("bin/META_INFO/b/b.xml", "");
  const Texts refusals = Found().refusals;
  ASSERT_EQ(1U, refusals.size());
  EXPECT_EQ(0U, refusals[0].find(Path("bin/META_INFO/b/b.xml") + ": is empty, ")) << refusals[0];
}

TEST_F(EarlyCheckOfProduct, GoesByTheModelThatTheFrameHandedOver) {
  tree.Product("a:a b:");
  const EarlyFindings derived = Found();
  ASSERT_EQ(1U, Errors(derived).size());
  EXPECT_EQ(0U, Errors(derived)[0].find(Path("bin/META_INFO/a/a.xml") + ":1: "));
  EXPECT_EQ(Texts(), derived.refusals);
  HandedOver model;
  model.model.ServerPluginDescriptions.emplace_back().ID = "a";
  EXPECT_EQ(Texts(), Errors(Found(std::move(model))));
}

TEST_F(EarlyCheckOfProduct, EndsWhereThereIsNoFolder) {
  EarlyCheck check(fs::path(tree.ExeDirectory()) / "nowhere", 1);
  check.Continue(std::nullopt);
  EXPECT_EQ(Texts(), Errors(check.Wait()));
}

TEST_F(EarlyCheckOfProduct, WaitsForTheFrame) {
  EarlyCheck check(tree.ExeDirectory(), 1);
  EXPECT_FALSE(check.WaitFor(milliseconds(1)));
  EXPECT_FALSE(check.IsDone());
  check.Continue(std::nullopt);
  EXPECT_TRUE(check.WaitFor(milliseconds(60'000)));
  EXPECT_TRUE(check.IsDone());
  EXPECT_FALSE(check.WaitFor(milliseconds(0)));
}

TEST_F(EarlyCheckOfProduct, SaysWhenItIsDone) {
  Latch done;
  EarlyCheck check(tree.ExeDirectory(), 1, [&done] { done.Arrive(); });
  check.Continue(std::nullopt);
  EXPECT_TRUE(done.Wait());
  EXPECT_TRUE(check.IsDone());
}

TEST(EarlyCheck, MayDelayAStartByTwentyMillisecondsAndTwoPerCent) {
  EXPECT_EQ(milliseconds(20), EarlyCheck::Limit(std::chrono::nanoseconds(0)));
  EXPECT_EQ(milliseconds(40), EarlyCheck::Limit(std::chrono::seconds(1)));
}

TEST_F(EarlyCheckOfProduct, WarnsOfOneThatStartsNothing) {
  tree.Product("");
  const EarlyFindings found = Found(HandedOver());
  ASSERT_EQ(1U, found.findings.size());
  EXPECT_EQ(Severity::kWarning, found.findings[0].severity);
  EXPECT_EQ(0U, found.findings[0].text.find(Path("Product.xml")));
}

TEST(FirstSentences, AreTenAndTheCommandThatShowsTheOthers) {
  EXPECT_EQ(Texts(10, "x"), FirstSentences(Texts(10, "x"), "bin"));
  Texts expected(10, "x");
  expected.emplace_back("and 2 more: HUB check --bin site/bin shows all");
  EXPECT_EQ(expected, FirstSentences(Texts(12, "x"), "site/bin"));
  const std::vector<Finding> findings =
      FirstFindings(std::vector<Finding>(12, {Severity::kError, "x"}), "site/bin");
  Texts texts;
  for (const Finding& finding : findings) texts.push_back(finding.text);
  EXPECT_EQ(expected, texts);
}

}  // namespace
