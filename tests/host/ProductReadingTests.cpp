#include "host/ProductReading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "reference/xrt/ExecutablePath.h"
#include "tests/support/ProductTree.h"

namespace fs = std::filesystem;

namespace {

using Kind = FrameEvent::Kind;

FrameEvent Note(Kind kind, const std::string& reason = "") {
  FrameEvent note;
  note.kind = kind;
  note.reason = reason;
  return note;
}

std::string Said(const FrameEvent& note) {
  const std::optional<Finding> finding = FindingOf(note);
  if (!finding) return "nothing";
  EXPECT_EQ(Severity::kError, finding->severity);
  return finding->text;
}

TEST(FindingOfANote, IsWhatAFailedStepOfTheStopCosts) {
  EXPECT_EQ(
      "the local-procedure-call framework did not stop; the plugins were neither stopped nor freed",
      Said(Note(Kind::kLpcStopFailed)));
  EXPECT_EQ("there were no threads for the stop; the plugins were neither stopped nor freed",
            Said(Note(Kind::kNoPoolForStop)));
}

TEST(FindingOfANote, IsWhatAStepThrew) {
  EXPECT_EQ("a step of the frame ended with an exception: no disk",
            Said(Note(Kind::kStepThrew, "no disk")));
  EXPECT_EQ("a step of the frame ended with something that is no exception object",
            Said(Note(Kind::kStepThrewNoException)));
}

TEST(FindingOfANote, IsNoneForWhatIsSaidElsewhere) {
  for (const Kind kind : {Kind::kNoPoolForStart, Kind::kPlatformInitFailed, Kind::kTypeUnknown,
                          Kind::kPluginDropped, Kind::kInitRefused, Kind::kRequiredFileUnreadable,
                          Kind::kInitFailed, Kind::kFrameInitEnd}) {
    EXPECT_EQ("nothing", Said(Note(kind, "x")));
  }
}

TEST(StartFailure, IsTheFirstReasonThatTheFrameLogged) {
  EXPECT_EQ(std::nullopt, StartFailure({}));
  EXPECT_EQ(std::nullopt, StartFailure({Note(Kind::kTypeUnknown), Note(Kind::kInitRefused, "x")}));
  EXPECT_EQ("there are no threads for them",
            StartFailure({Note(Kind::kTypeUnknown), Note(Kind::kNoPoolForStart),
                          Note(Kind::kStepThrew, "no disk")}));
  EXPECT_EQ("no disk",
            StartFailure({Note(Kind::kStepThrew, "no disk"), Note(Kind::kNoPoolForStart)}));
  EXPECT_EQ("a step threw something that is no exception object",
            StartFailure({Note(Kind::kStepThrewNoException), Note(Kind::kStepThrew, "no disk")}));
}

/// A product on disk whose bin folder is set as the executable's folder.
class ProductReading : public testing::Test {
 protected:
  ProductReading() {
    tree.Product("a: b:");
    SetExecutablePath(tree.ExePath());
  }
  ~ProductReading() override { SetExecutablePath(""); }

  std::string Path(const std::string& file) const {
    return (fs::path(tree.ExeDirectory()).parent_path().parent_path() / file)
        .make_preferred()
        .string();
  }

  using Texts = std::vector<std::string>;

  static Texts Found(const ProductModel& model, const std::vector<FrameEvent>& notes) {
    Texts texts;
    for (const Finding& finding : ProductFindings(model, notes)) texts.push_back(finding.text);
    return texts;
  }

  const ProductTree tree;
};

TEST_F(ProductReading, ThatFailedWithGoodFilesHasTheFramesWords) {
  EXPECT_EQ(Texts{"Frame_Init failed and logged no reason"}, FailureSentences({}));
  EXPECT_EQ(Texts{"the frame refused the product: no plugins"},
            FailureSentences({Note(Kind::kInitRefused, "no plugins")}));
  EXPECT_EQ(Texts{"the platform did not come up"},
            FailureSentences({Note(Kind::kPlatformInitFailed)}));
  EXPECT_EQ(Texts{"Frame_Init ended with an exception: no disk"},
            FailureSentences({Note(Kind::kInitRefused, "x"), Note(Kind::kStepThrew, "no disk")}));
}

TEST_F(ProductReading, ThatFailedForMissingFilesNamesEachOfThem) {
  tree.Remove("bin/META_INFO/b");
  tree.Remove("bin/META_INFO/Portal.xml");
  const auto missing = [this](const std::string& file, const std::string& standIn,
                              const std::string& listed) {
    return Path(file) + " does not exist, and there is no " + standIn +
           " beside it that could stand in" + listed + "; the product cannot be read";
  };
  Texts sentences = FailureSentences({Note(Kind::kInitRefused, "x")});
  std::sort(sentences.begin(), sentences.end());
  EXPECT_EQ((Texts{missing("bin/META_INFO/Portal.xml", "Portal.data", ""),
                   missing("bin/META_INFO/b/b.xml", "b.data", "; Product.xml:1 lists \"b\"")}),
            sentences);
}

TEST_F(ProductReading, ThatFailedForManyFilesNamesTwentyAndCountsTheRest) {
  std::string words;
  for (int i = 0; i < 25; ++i) words += "p" + std::to_string(i) + ": ";
  tree.Product(words);
  for (int i = 0; i < 25; ++i) tree.Remove("bin/META_INFO/p" + std::to_string(i));
  const Texts all = FailureSentences({});
  EXPECT_EQ(25U, all.size());
  const Texts sentences = FirstSentences(all);
  ASSERT_EQ(21U, sentences.size());
  EXPECT_EQ(0U, sentences[19].find(Path("bin/META_INFO/p19/p19.xml")));
  EXPECT_EQ("and 5 more of the product's files cannot be read", sentences[20]);
}

TEST_F(ProductReading, FindsADescriptionWithAnUnknownType) {
  FrameEvent note = Note(Kind::kTypeUnknown);
  note.path = tree.ExeDirectory() + "META_INFO/b/b.xml";
  EXPECT_EQ(Texts{Path("bin/META_INFO/b/b.xml") +
                  ": its Type is neither 1 (executable) nor 2 (library): the plugin is dropped"},
            Found({}, {note}));
}

TEST_F(ProductReading, FindsAProductThatListsNoPlugin) {
  EXPECT_EQ(Texts{Path("Product.xml") + " lists no plugin: nothing is started"}, Found({}, {}));
  ProductModel model;
  model.DriverPluginDescriptions.emplace_back();
  EXPECT_EQ(Texts{}, Found(model, {}));
}

TEST_F(ProductReading, FindsADescriptionThatReadsAsEmptyOnce) {
  FrameEvent note = Note(Kind::kTypeUnknown);
  note.path = tree.Write("bin/META_INFO/b/b.xml", "<Other/>");
  EXPECT_EQ(Texts{Path("bin/META_INFO/b/b.xml") +
                  ":1: its root is <Other>, not <Plugin>: the whole file reads as empty, so the "
                  "plugin that Product.xml:1 lists as \"b\" is dropped"},
            Found({}, {note}));
}

TEST_F(ProductReading, FindsACycleBeforeWhatTheFilesLack) {
  tree.Product("a:a b:");
  tree.Write("bin/META_INFO/b/b.xml", "<Plugin>");
  PluginDescription plugin;
  plugin.ID = "a";
  plugin.Dependencies.emplace_back().ID = "a";
  ProductModel model;
  model.ServerPluginDescriptions = {plugin};
  const Texts found = Found(model, {});
  ASSERT_EQ(2U, found.size());
  EXPECT_EQ(0U, found[0].find("a \u2192 a: "));
  EXPECT_EQ(0U, found[1].find(Path("bin/META_INFO/b/b.xml") + ":1: not well-formed ("));
}

}  // namespace
