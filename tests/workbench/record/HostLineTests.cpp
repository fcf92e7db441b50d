#include "workbench/record/HostLine.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Read(const std::string& text) {
  const auto line = ReadHostLine(text);
  if (!line) return "none";
  return std::to_string(line->level) + "|" + std::to_string(line->thread) + "|" +
         std::string(line->module) + "|" + std::string(line->text);
}

TEST(HostLine, IsReadWithItsParts) {
  EXPECT_EQ("5|4711|a.server|[x] y",
            Read("2026-11-23 13:42:08.271+01:00 [5] [4711] [a.server] [x] y"));
  EXPECT_EQ("3|1||", Read("2026-11-23 13:42:08.271-01:00 [3] [1] [] "));
}

TEST(HostLine, IsNoneOfAnotherOrACutLine) {
  const std::string line = "2026-11-23 13:42:08.271+01:00 [5] [4711] [a] ";
  for (std::size_t size = 0; size < line.size(); ++size) {
    EXPECT_EQ("none", Read(line.substr(0, size)));
  }
  EXPECT_EQ("none", Read("2026-11-23T13:42:08.271+01:00 [5] [4711] [a] b"));
  EXPECT_EQ("none", Read("2026-11-23 13:42:08.271+01:00 [x] [4711] [a] b"));
  EXPECT_EQ("none", Read("2026-11-23 13:42:08.271+01:00 [5] [99999999999999999999999] [a] b"));
}

TEST(HostLine, IsFoundBehindWhatAnotherProgramWritesBeforeIt) {
  const std::string line = "2026-11-23 13:42:08.271+01:00 [5] [4711] [a] b";
  EXPECT_EQ(std::size_t{13}, FindHostLine("Nov 23 hub[7]" + line));
  EXPECT_EQ(std::nullopt, FindHostLine("Nov 23 hub[7]"));
}

}  // namespace
