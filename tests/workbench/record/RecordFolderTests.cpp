#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/TemporaryFolder.h"
#include "workbench/record/FlightRecord.h"

namespace fs = std::filesystem;

namespace {

class RecordFolders : public testing::Test {
 protected:
  std::string Name(const std::string& product) const {
    return RecordFolder(temporary.Path(), fs::u8path(product)).Path().filename().string();
  }

  void Touch(const fs::path& file) const { std::ofstream(file) << "x"; }

  /// The sorted names of the files in the folder.
  std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(runs.Path())) {
      files.push_back(entry.path().filename().string());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  /// The path of the record of a run that begins at `second`.
  fs::path Run(int second) const {
    const std::string seconds = (second < 10 ? "0" : "") + std::to_string(second);
    return runs.NewRecord("2026-11-21T18:46:" + seconds + ".123Z", 77);
  }

  TemporaryFolder temporary;
  RecordFolder runs{temporary.Path(), "/opt/harbour/bin"};
};

TEST_F(RecordFolders, AreNamedByTheProductAndAHashOfItsPath) {
  EXPECT_EQ(temporary.Path() / "TevPluginFrame" / "runs" / "harbour-970ddc0656d6fb8d", runs.Path());
}

TEST_F(RecordFolders, OfTwoProductsDiffer) {
  EXPECT_NE(Name("/opt/harbour/bin"), Name("/srv/harbour/bin"));
  EXPECT_EQ(Name("/opt/harbour/bin"), Name("/opt/harbour/bin/"));
  EXPECT_EQ(Name("/opt/harbour/bin"), Name("/opt/./x/../harbour/bin/."));
}

TEST_F(RecordFolders, HaveNamesThatEverySystemTakes) {
  const auto name = [this](const std::string& product) {
    const std::string whole = Name("/opt/" + product + "/bin");
    return whole.substr(0, whole.size() - 17);
  };
  EXPECT_EQ("Site-2.6", name("Site-2.6"));
  EXPECT_EQ("-a-b-c---d", name(":a b*c|?\"d"));
  EXPECT_EQ("H--fen", name("H\xc3\xa4"
                           "fen"));
  EXPECT_EQ(std::string(40, 'x'), name(std::string(100, 'x')));
  EXPECT_EQ(16U, Name("/").size());
}

TEST_F(RecordFolders, NameARecordByTimeAndProcess) {
  EXPECT_EQ(runs.Path() / "20261121T184659.123Z-77.jsonl",
            runs.NewRecord("2026-11-21T18:46:59.123Z", 77));
  EXPECT_TRUE(fs::is_directory(runs.Path()));
  EXPECT_EQ(std::vector<std::string>(), Files());
}

TEST_F(RecordFolders, ThatCannotBeMadeAreAnErrorWithTheirName) {
  const fs::path file = temporary.Write("file", "");
  const RecordFolder below(file, "/opt/harbour/bin");
  try {
    below.NewRecord("2026-11-21T18:46:59.123Z", 77);
    FAIL() << "it was made";
  } catch (const std::runtime_error& error) {
    const std::string begin =
        "the folder of the records, " + below.Path().string() + ", cannot be made: ";
    EXPECT_EQ(begin, std::string(error.what()).substr(0, begin.size()));
  }
}

TEST_F(RecordFolders, KeepTheNewestRecordsTheSparedOneAndAllOtherFiles) {
  std::vector<std::string> expected;
  for (int second = 25; second > 0; --second) {
    Touch(Run(second));
    if (second > 5 || second == 2) expected.push_back(Run(second).filename().string());
  }
  for (const char* other : {"notes.txt", "20261121T184601.123Z-77.jsonl.old", "0.jsonl"}) {
    Touch(runs.Path() / other);
    expected.emplace_back(other);
  }
  std::sort(expected.begin(), expected.end());
  runs.Prune(Run(2));
  EXPECT_EQ(expected, Files());
}

TEST_F(RecordFolders, ThatAreNotThereHaveNothingToPrune) {
  runs.Prune({});
  EXPECT_FALSE(fs::exists(runs.Path()));
}

}  // namespace
