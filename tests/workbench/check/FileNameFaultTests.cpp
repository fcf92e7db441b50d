#include "workbench/check/FileNameFault.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(FileNameFault, PlainNamesHaveNone) {
  for (const char* id : {"", "a", "alarm.server", "map-2_x", "auxiliary.server", "com.server",
                         "coma.server", "com0.server", "com10.server", "server.aux", ".hidden"}) {
    EXPECT_EQ("", FileNameFault(id)) << id;
  }
}

TEST(FileNameFault, BlanksAtTheEndsComeFirst) {
  EXPECT_EQ("begins with a blank", FileNameFault(" a/b"));
  EXPECT_EQ("begins with a tab", FileNameFault("\ta"));
  EXPECT_EQ("begins with a line break", FileNameFault("\n  a\n"));
  EXPECT_EQ("ends in a blank", FileNameFault("a "));
  EXPECT_EQ("ends in a line break", FileNameFault("a\r"));
}

TEST(FileNameFault, NamesTheFirstCharacterThatNoNameMayHave) {
  EXPECT_EQ("contains \"/\", which separates folders", FileNameFault("a/b\\c"));
  EXPECT_EQ("contains \"\\\", which separates folders", FileNameFault("..\\a"));
  EXPECT_EQ("contains \":\", which Windows refuses in names", FileNameFault("a:b/c"));
  EXPECT_EQ("contains a control character", FileNameFault("a\x01"));
  EXPECT_EQ(
      "contains a character beyond ASCII, whose bytes Windows takes for other characters unless "
      "its code page is UTF-8",
      FileNameFault("k\xc3\xa4se"));
}

TEST(FileNameFault, DotsThatSystemsTakeForSomethingElse) {
  EXPECT_EQ("is the name that systems give to a folder itself", FileNameFault("."));
  EXPECT_EQ("is the name that systems give to a folder itself", FileNameFault(".."));
  EXPECT_EQ("ends in \".\", which Windows removes from names of folders", FileNameFault("a."));
}

TEST(FileNameFault, DevicesOfWindowsWithAndWithoutMoreBehindThem) {
  EXPECT_EQ("begins with \"aux\", a device on Windows", FileNameFault("aux.server"));
  EXPECT_EQ("begins with \"NUL\", a device on Windows", FileNameFault("NUL"));
  EXPECT_EQ("begins with \"Lpt9\", a device on Windows", FileNameFault("Lpt9.x.y"));
}

}  // namespace
