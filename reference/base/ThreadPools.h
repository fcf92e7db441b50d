#pragma once

#include <cstddef>

/// How many tasks wait or run, over all pools, those released included. Any thread.
std::size_t UnfinishedTasks();
