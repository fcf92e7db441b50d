#pragma once

#include <string>

#include "workbench/timeline/Timeline.h"

/// The run in the Chrome trace event format, which Perfetto and chrome://tracing open: one JSON
/// object with `traceEvents`, an event a line, ended by a line feed. Described in docs/report.md.
///
/// Whatever the record says, the slices of a track nest, every asynchronous event that begins ends,
/// and an arrow begins and ends inside a slice. Bytes that are not valid UTF-8 become U+FFFD.
std::string ReportTrace(const Timeline& timeline);
