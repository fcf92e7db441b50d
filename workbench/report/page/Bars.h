#pragma once

#include <cstddef>
#include <string>

#include "workbench/report/page/PhaseView.h"

// The drawings of the page: SVG without styles of its own, widths in percent of the time axis.

/// The time axis with a line down to the last of `rows` rows.
std::string AxisSvg(const PhaseView& view, std::size_t rows);

/// What a plugin did when; of a plugin on the critical path with the edge that released it, for
/// rows in the order of PhaseView::order.
std::string PluginSvg(const PhaseView& view, std::size_t plugin);

/// What one thread did when; `plugins` in the order of their begins.
std::string LaneSvg(const PhaseView& view, const std::vector<std::size_t>& plugins);

/// One bar: the phase's wall time divided into critical path, waiting for the next look, and idle.
std::string BalanceSvg(const PhaseView& view);

/// What the bars mean. Also defines the patterns that the style refers to.
std::string LegendHtml(const PhaseView& view);

/// The patterns and the arrow that the style names; once in a page.
std::string DefinitionsSvg();
