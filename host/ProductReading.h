#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/Finding.h"
#include "host/FrameLibrary.h"
#include "workbench/product/ProductName.h"
#include "workbench/record/FrameEvent.h"

/// Calls Frame_Init; the XML parser's messages go to the log. Call it on the thread that drives the
/// frame.
std::int32_t InitialiseFrame(const FrameLibrary& frame);

/// The product's name and version from Product.xml. Both are empty when it cannot be read or is too
/// large for the parser; Frame_Init then fails on it too and reports that.
ProductName NameOfProduct();

/// The finding for a note that the frame logged after Frame_Init and that did not end the run: a
/// stop that could not begin, an exception. None for a note of another kind.
std::optional<Finding> FindingOf(const FrameEvent& note);

/// Why Frame_Init failed though all required files can be read: the reason that the frame logged.
std::string FrameReason(const std::vector<FrameEvent>& notes);

/// Why the plugins were not started, as far as the frame has logged a reason.
std::optional<std::string> StartFailure(const std::vector<FrameEvent>& notes);
