#pragma once

#include <string>

/// How a program ended ("status 4", "signal 11") and what it printed.
struct ProgramEnd {
  std::string end;
  std::string output;
  std::string errors;
};

/// Runs `program` with one argument and waits for its end.
ProgramEnd RunProgram(const std::string& program, const std::string& argument);
