#pragma once

#include <regex>
#include <sstream>
#include <string>

#include "tests/reference/Program.h"

/// Runs the program `ends_badly`, which ends in the given way.
inline ProgramEnd End(const std::string& way) {
  return RunProgram(TEV_ENDS_BADLY, way);
}

/// How the program ended and the lines of its report without the stack: "status 4; reported …;
/// report complete". Long hexadecimal numbers and process IDs, which vary, become "N".
inline std::string Summary(const ProgramEnd& program) {
  std::string summary = program.end;
  std::istringstream lines(program.errors);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.compare(0, 6, "report") == 0) summary += "; " + line;
  }
  return std::regex_replace(summary, std::regex("(0x[0-9a-f]{6,}|process [0-9]+)"), "N");
}

/// The line of the stack with this number; empty when there is none.
inline std::string StackLine(const ProgramEnd& program, int number) {
  std::istringstream lines(program.errors);
  const std::string begin = "#" + std::to_string(number) + " ";
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, begin.size(), begin) == 0) return line;
  }
  return "";
}
