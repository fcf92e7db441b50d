#include "reference/os/Terminal.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "tests/reference/Program.h"

namespace {

ProgramEnd EndOf(const std::string& way) {
  ProgramEnd program = RunProgram(TEV_OWNS_OUTPUT, way);
  for (std::string* text : {&program.output, &program.errors}) {
    text->erase(std::remove(text->begin(), text->end(), '\r'), text->end());
  }
  return program;
}

TEST(OwnOutput, WhatOtherCodePrintsGoesToStandardError) {
  const ProgramEnd program = EndOf("print");
  EXPECT_EQ("first\nfrom a crash\nlast\n", program.output);
  EXPECT_EQ("from printf\nfrom cout\nfrom a child\n", program.errors);
}

TEST(OwnOutput, TextsOfSeveralThreadsDoNotMix) {
  std::istringstream lines(EndOf("threads").output);
  std::map<std::string, int> counts;
  for (std::string line; std::getline(lines, line);) ++counts[line];
  std::map<std::string, int> expected;
  for (const char letter : {'a', 'b', 'c', 'd'}) expected[std::string(5000, letter)] = 50;
  EXPECT_EQ(expected, counts);
}

TEST(OwnOutput, FileIsNoTerminalAndHasTheUsualWidth) {
  EXPECT_EQ("file 80\n", EndOf("ask").errors);
}

}  // namespace
