#pragma once

#include <functional>
#include <string>

#include "workbench/timeline/Timeline.h"

/// Where a product declares that `plugin` depends on `on`: "bin/META_INFO/a/a.xml:12:5"; empty when
/// it is not known.
using DeclaredAt = std::function<std::string(const std::string& plugin, const std::string& on)>;

/// Why a plugin began when it did: what released it, how long it waited then for the frame's look
/// and for a thread, and the same for each plugin before it, back to the start's begin. Of a plugin
/// that never began, what it waits for. Of a timeline without a start, as of a product that has not
/// run: everything that it waits for. In lines.
std::string WhyText(const Timeline& timeline, std::size_t plugin, const DeclaredAt& declaredAt);

/// Why one plugin starts before the other: the shortest chain of dependencies, whichever of the two
/// comes first; or that nothing orders them. With a start, also what really happened. In lines.
std::string WhyBeforeText(const Timeline& timeline, std::size_t plugin, std::size_t other,
                          const DeclaredAt& declaredAt);
