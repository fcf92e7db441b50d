#pragma once

#include <string>

#include "workbench/report/ReportText.h"
#include "workbench/timeline/Advice.h"
#include "workbench/timeline/Prediction.h"

// What-if and advice for people, in lines. `timeline`: the run that they are of.

/// What start and stop took, would take, and which plugins would begin earlier or later most; or
/// why nothing can be predicted.
std::string WhatIfText(const Timeline& timeline, const RunPrediction& prediction,
                       const ReportStyle& style);

/// What start and stop would gain at most by each change; or why that is not known.
std::string AdviceText(const Timeline& timeline, const RunAdvice& advice, const ReportStyle& style);
