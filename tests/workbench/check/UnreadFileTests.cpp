// What depends on whether the file system distinguishes capitals: the case files of TEV118 cannot
// have two names that differ in nothing else.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "workbench/check/Rule.h"

namespace {

CheckedFile Platform() {
  CheckedFile file;
  file.kind = FileKind::kPlatform;
  file.name = "bin/META_INFO/Platform.xml";
  return file;
}

std::string Found(const CheckedFile& file, const std::vector<std::string>& names) {
  CheckedProduct product;
  product.bin = "bin";
  product.files.push_back(file);
  product.names = names;
  std::string text;
  for (const RuleFinding& finding : RunRules({FindRule("TEV118")}, product)) {
    text += finding.place.file + ": " + finding.message + "\n";
  }
  return text;
}

TEST(UnreadFile, ReportsASecondFileWithOtherLetterCase) {
  CheckedFile file = Platform();
  file.readName = file.name;
  EXPECT_EQ(
      "bin/META_INFO/platform.xml: is not read; the frame reads Platform.xml beside it, and on "
      "Windows both names are one file\n",
      Found(file, {"bin/META_INFO/Platform.xml", "bin/META_INFO/platform.xml"}));
}

TEST(UnreadFile, IsSilentOnTheFileThatWasReadUnderAnotherLetterCase) {
  CheckedFile file = Platform();
  file.readName = file.name;
  EXPECT_EQ("", Found(file, {"bin/META_INFO/platform.xml"}));
}

TEST(UnreadFile, IsSilentOnNamesThatHintAtAMissingFile) {
  CheckedFile file = Platform();
  file.missing = true;
  EXPECT_EQ("", Found(file, {"bin/META_INFO/Platfrom.xml", "bin/META_INFO/platform.xml"}));
}

}  // namespace
