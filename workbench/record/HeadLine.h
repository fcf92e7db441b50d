#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "workbench/record/RunEvent.h"

/// The head as one line of text, with which HUB begins a run in its log.
std::string HeadLine(const RunHead& head);

/// The versions, process, machine, product and folder of such a line; none of another text. What a
/// line does not say is empty: the time, and the command line, whose arguments it does not separate
/// in every case.
std::optional<RunHead> ReadHeadLine(std::string_view line);
