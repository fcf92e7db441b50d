#include "workbench/report/Times.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "workbench/timeline/Timeline.h"

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;

/// What one unit of the last digit stands for.
std::int64_t Unit(std::int64_t resolution) {
  return resolution < kMillisecond ? kMillisecond / 10 : kMillisecond;
}

std::string UnitsText(std::int64_t units, std::int64_t unit) {
  if (unit == kMillisecond) return fmt::format("{}", units);
  return fmt::format("{}.{}", units / 10, units % 10);
}

std::int64_t Rounded(std::int64_t nanoseconds, std::int64_t unit) {
  return (nanoseconds + unit / 2) / unit;
}

}  // namespace

std::string MsText(std::int64_t nanoseconds, std::int64_t resolution) {
  if (nanoseconds == kUnknown) return "-";
  const std::int64_t unit = Unit(resolution);
  return UnitsText(Rounded(nanoseconds, unit), unit);
}

std::vector<std::string> MsTexts(const std::vector<std::int64_t>& parts, std::int64_t resolution) {
  const std::int64_t unit = Unit(resolution);
  std::vector<std::int64_t> units;
  units.reserve(parts.size());
  for (const std::int64_t part : parts) units.push_back(part / unit);
  const std::int64_t sum = std::accumulate(parts.begin(), parts.end(), std::int64_t{0});
  const std::int64_t shown = std::accumulate(units.begin(), units.end(), std::int64_t{0});
  std::vector<std::size_t> order(parts.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return parts[a] % unit > parts[b] % unit; });
  const auto missing = static_cast<std::size_t>(Rounded(sum, unit) - shown);
  for (std::size_t i = 0; i < std::min(missing, order.size()); ++i) ++units[order[i]];
  std::vector<std::string> texts;
  texts.reserve(units.size());
  for (const std::int64_t number : units) texts.push_back(UnitsText(number, unit));
  return texts;
}

std::string ShareText(std::int64_t part, std::int64_t whole) {
  if (whole <= 0) return "-";
  return fmt::format("{:.1f}%", 100 * static_cast<double>(part) / static_cast<double>(whole));
}
