#pragma once

#include <string>

#include "workbench/output/Severity.h"

/// A problem of a product or of its run, or a note on it, as one sentence for the user.
struct Finding {
  Severity severity;
  std::string text;
};
