#pragma once

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

/// What one entry of a stub does.
struct EntryBehavior {
  enum class Ending { kSucceeds, kFails, kThrows, kHangs, kAborts, kSegfaults, kExits };

  std::chrono::microseconds duration{0};  // before the ending
  Ending ending = Ending::kSucceeds;
};

/// What a stub does in place of the plugin that it stands for.
struct Behavior {
  EntryBehavior init;
  EntryBehavior uninit;
  bool busy = false;  // uses the processor while its entries last
};

/// Reads the behavior of the plugin `name` from a file with one line for each plugin:
///
///     NAME INIT-MICROSECONDS INIT-ENDING UNINIT-MICROSECONDS UNINIT-ENDING
///
/// An ending is succeeds, fails, throws, hangs, aborts, segfaults or exits. Lines that begin with #
/// are comments; a line "busy", before that of the plugin, sets Behavior::busy. Names have no
/// blanks. Nothing when the file has no such line.
std::optional<Behavior> ReadBehavior(std::FILE& file, const std::string& name);

/// The line of a plugin, with its line feed. Behavior::busy is not part of it.
std::string BehaviorLine(const std::string& name, const Behavior& behavior);
