#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "workbench/check/CheckReport.h"

/// Returns a line of a file of the product, without its line feed; `file` as in Place, `line` from
/// 1. Empty when there is none.
using SourceLine = std::function<std::string(const std::string& file, int line)>;

struct TextStyle {
  bool color = false;
  std::size_t columns = 100;  // a longer line of a file is cut around the caret
};

/// The findings as lines of text, as compilers print them:
///
///     site/Product.xml:3:5: error: <Plugns>: unknown; did you mean <Plugins>? [TEV106]
///         3 |     <Plugns>
///           |     ^~~~~~~
///
/// A message is never wrapped, so that programs can find it; everything on which a terminal may act
/// is escaped. Of a finding with many related places only the first 20 are shown. Findings that the
/// baseline accepts are only counted. Takes time in proportion to the findings and the lines that
/// they name.
std::string FindingsText(const CheckReport& report, const SourceLine& sourceLine,
                         const TextStyle& style);

/// "2 errors, 1 warning, 3 notes; 1 more accepted by the baseline"; "no findings". `accepted`: the
/// words for those that are not new.
std::string CountsLine(const FindingCounts& counts,
                       const std::string& accepted = "accepted by the baseline");
