#pragma once

#include <string>

#include "workbench/timeline/Timeline.h"

/// The report on a run as one HTML page: how it ended, where the time of start and stop went, the
/// critical path, a row for each plugin and a lane for each thread.
///
/// The page needs no other file and no network. Everything that it says can be read without its
/// script, which only adds sorting, filtering, zooming and the edges of a single plugin. Its
/// content security policy allows its own style and script and nothing else, and all texts of the
/// run are escaped, so that no name can add elements or run code.
std::string ReportHtml(const Timeline& timeline);
