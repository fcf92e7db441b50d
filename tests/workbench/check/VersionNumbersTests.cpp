#include "workbench/check/VersionNumbers.h"

#include <gtest/gtest.h>

namespace {

TEST(VersionNumbers, ComparePartsAsNumbers) {
  EXPECT_EQ(-1, CompareVersions("2.9", "2.10"));
  EXPECT_EQ(1, CompareVersions("10.0", "9.9.9"));
  EXPECT_EQ(0, CompareVersions("2.7.1", "2.7.1"));
}

TEST(VersionNumbers, MissingPartsCountAsZero) {
  EXPECT_EQ(0, CompareVersions("2", "2.0.0"));
  EXPECT_EQ(-1, CompareVersions("2.7", "2.7.1"));
}

TEST(VersionNumbers, LeadingZerosDoNotCount) {
  EXPECT_EQ(0, CompareVersions("2.07", "2.7"));
  EXPECT_EQ(0, CompareVersions("2.000", "2.0"));
  EXPECT_EQ(1, CompareVersions("2.010", "2.9"));
}

TEST(VersionNumbers, NumbersMayBeLong) {
  EXPECT_EQ(-1, CompareVersions("99999999999999999999", "100000000000000000000"));
}

TEST(VersionNumbers, OtherTextsHaveNoOrder) {
  for (const char* text : {"", ".", "2.", ".2", "2..1", "2.x", "v2", "2.7-rc1", " 2", "-1"}) {
    EXPECT_FALSE(CompareVersions(text, "1")) << text;
    EXPECT_FALSE(CompareVersions("1", text)) << text;
  }
}

TEST(ThreePartsOfAVersion, AreTheFirstThatAreNotEmpty) {
  EXPECT_EQ("2.6.1", ThreeParts("2.6.1.15"));
  EXPECT_EQ("2.6.1", ThreeParts("2.6.1"));
  EXPECT_EQ("3.1.2", ThreeParts(".3..1.2."));
  EXPECT_EQ(" 2.x.1 ", ThreeParts(" 2.x.1 .4"));
}

TEST(ThreePartsOfAVersion, AreEmptyWhenThereAreFewer) {
  EXPECT_EQ("", ThreeParts("3.1"));
  EXPECT_EQ("", ThreeParts("3..1."));
  EXPECT_EQ("", ThreeParts(""));
}

TEST(VersionAboveAnother, IsComparedPartByPartAsNumbers) {
  EXPECT_TRUE(IsAboveAsNumbers("2.10", "2.9"));
  EXPECT_FALSE(IsAboveAsNumbers("2.9", "2.10"));
  EXPECT_TRUE(IsAboveAsNumbers("3", "2.9.9"));
  EXPECT_TRUE(IsAboveAsNumbers("1.20000000000000000000", "1.19999999999999999999"));
}

TEST(VersionAboveAnother, NeedsADifferentPartThatBothHave) {
  EXPECT_FALSE(IsAboveAsNumbers("2.7.1", "2.7"));
  EXPECT_FALSE(IsAboveAsNumbers("2.7", "2.7.1"));
  EXPECT_FALSE(IsAboveAsNumbers("2.07.1", "2.7.1"));
  EXPECT_FALSE(IsAboveAsNumbers("2.7.1", "2.07.1"));
}

TEST(VersionAboveAnother, HasNumbersOnly) {
  EXPECT_FALSE(IsAboveAsNumbers("3.x", "2.9"));
  EXPECT_FALSE(IsAboveAsNumbers("3", " 2.9"));
  EXPECT_FALSE(IsAboveAsNumbers("3", ""));
  EXPECT_FALSE(IsAboveAsNumbers("3.", "2"));
}

}  // namespace
