#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// A line of HUB's log: `YYYY-MM-DD hh:mm:ss.mmm+hh:mm [LEVEL] [THREAD] [MODULE] TEXT`.
struct HostLine {
  int level = 0;
  std::uint64_t thread = 0;
  std::string_view module;
  std::string_view text;
  std::string_view moduleAndText;  // with the brackets of the module
};

/// The parts of such a line; none of another one. They refer to `line`. A module ends at the first
/// "] ".
std::optional<HostLine> ReadHostLine(std::string_view line);

/// Where such a line begins in one that has something before it; none when `line` contains none.
std::optional<std::size_t> FindHostLine(std::string_view line);
