#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/FrameLibrary.h"
#include "src/model/ProductModel.h"
#include "workbench/product/Findings.h"
#include "workbench/product/ProductName.h"
#include "workbench/record/FrameEvent.h"

/// Frame_Init, with what the XML parser says led to the log. On any thread, the frame's.
std::int32_t InitialiseFrame(const FrameLibrary& frame);

/// What Product.xml calls the product; both empty when it cannot be read, or when it is too large
/// for the parser: Frame_Init is about to fail on it too, and says so.
ProductName NameOfProduct();

/// What is wrong with the product that was read, although the frame went on: cycles, files that
/// read as empty, plugins that are lost. `notes`: what the frame logged while it read.
std::vector<Finding> ProductFindings(const ProductModel& model,
                                     const std::vector<FrameEvent>& notes);

/// What the frame noted later that costs a run something although it went on, in the words of HUB:
/// a stop that could not begin, an exception. None for a note of another kind.
std::optional<Finding> FindingOf(const FrameEvent& note);

/// Why Frame_Init failed: a sentence for each model file that it could not do without, or, where no
/// file is to blame, the frame's own words. `notes`: what it logged. Never empty.
std::vector<std::string> FailureSentences(const std::vector<FrameEvent>& notes);

/// What people are shown of them: the first ones, and in a sentence how many more there are.
std::vector<std::string> FirstSentences(std::vector<std::string> sentences);
