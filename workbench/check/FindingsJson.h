#pragma once

#include <string>

#include "workbench/check/CheckReport.h"

/// One JSON object, as schemas/check.schema.json has it. A member without a value is left out.
/// Messages are escaped as on a terminal; in names, bytes that are not valid UTF-8 become U+FFFD.
std::string FindingsJson(const CheckReport& report);
