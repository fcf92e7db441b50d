#pragma once

#include "workbench/timeline/Timeline.h"

/// How a plugin's start or stop ended, as one word for programs: "ok", "not-loaded"...
const char* ResultName(PluginSpan::Result result);
