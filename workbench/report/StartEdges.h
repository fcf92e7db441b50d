#pragma once

#include <cstddef>
#include <vector>

/// Which plugins a plugin depends on, by its position; each once.
using DependencyLists = std::vector<std::vector<std::size_t>>;

/// `lists` without repetitions, in their order.
DependencyLists WithoutRepetitions(const DependencyLists& lists);

/// Which plugins depend on each.
DependencyLists Reversed(const DependencyLists& lists);

/// A number for each plugin, the same for those that all depend on each other, directly or not. A
/// dependency is part of a cycle when both its ends have the same number.
std::vector<std::size_t> CycleNumbers(const DependencyLists& lists);

/// Marks the plugins that can be reached from `from` over at most `depth` dependencies.
void MarkWithin(const DependencyLists& lists, std::size_t from, std::size_t depth,
                std::vector<bool>& marks);
