#pragma once

#include "workbench/timeline/Timeline.h"

/// Fills `path`, `lastWait` and `balance` of a phase whose spans are filled. `knowsEdges`: whether
/// `waitsFor` and `releasedBy` say what really waited for what.
void FillPath(PhaseTimeline& phase, bool knowsEdges);

/// Fills `slack` of every span that has ended: how much later the plugin could have ended while
/// everything on the critical path kept its times. Waiting for a look is not counted as slack, so
/// that the plugins of the critical path have none. A plugin that has not ended counts as ending
/// with the phase.
void FillSlack(PhaseTimeline& phase);
