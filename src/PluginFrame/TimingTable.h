#pragma once

#include <cstdint>

#include "sdk/kpx/platform.h"

namespace PluginFrame {

constexpr char kRowIsLost[] = "a row of the timing table is lost";

/// Adds the row that `makeText` returns to the platform's timing table; -1 milliseconds mark a row
/// that is no timing. False when an exception was thrown: the row is then lost.
template <typename MakeText>
bool AddTimingRow(MakeText makeText, std::int32_t milliseconds) {
  try {
    pluginTakeTimeCountPrint(makeText(), milliseconds);
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace PluginFrame
