#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "reference/os/StopSignal.h"

/// HUB's exit statuses.
enum ExitStatus : int { kOk = 0, kFrameFailed = 1, kUsage = 2 };

/// What the command line asks for.
struct Options {
  std::string bin;  // stands for the running executable's folder; empty: the program's own
  std::int32_t module = 1;
  std::string log;
  bool json = false;
  std::optional<double> seconds;  // how long to run; none: until a stop is asked for
};

/// Initialises the frame, prints what it hands over as one JSON object, and un-initialises.
ExitStatus ModelCommand(const Options& options);

/// Lives the product's whole life until a stop is asked for or its time is up, and shows it.
ExitStatus RunCommand(const Options& options, StopSignal& stop);
