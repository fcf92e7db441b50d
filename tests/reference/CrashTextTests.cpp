#include "reference/os/CrashText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

TEST(CrashText, HoldsTextsAndNumbers) {
  CrashText text;
  text.Add("a ").AddNumber(0).Add(" ").AddNumber(INT64_MIN).Add(" ").AddNumber(INT64_MAX);
  EXPECT_EQ("a 0 -9223372036854775808 9223372036854775807", text.View());
  CrashText hex;
  hex.AddHex(0).Add(" ").AddHex(UINT64_MAX);
  EXPECT_EQ("0x0 0xffffffffffffffff", hex.View());
}

TEST(CrashText, EscapesControlBytes) {
  CrashText text;
  text.AddEscaped("a\n\x1f\x7f\x80 \xc3\xa9");
  EXPECT_EQ("a\\x0a\\x1f\\x7f\x80 \xc3\xa9", text.View());
}

TEST(CrashText, DropsWhatDoesNotFit) {
  CrashText text;
  text.Add(std::string(2040, 'x')).Add("1234567890");
  EXPECT_EQ(std::string(2040, 'x') + "1234567", text.View());
  EXPECT_EQ(text.View(), text.CStr());
}

}  // namespace
