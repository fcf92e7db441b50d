// schedule.server: opens and closes the site, Monday to Friday from six to ten (UTC).

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "schedule.server";

bool IsOpen(const ClockService& clock) {
  constexpr int kSunday = 0;
  constexpr int kSaturday = 6;
  const int day = clock.DayOfWeek();
  const int hour = clock.MinuteOfDay() / 60;
  return day != kSunday && day != kSaturday && hour >= 6 && hour < 22;
}

Subscription g_ticks;

}  // namespace

bool Init() {
  const auto clock = board::Need<ClockService>(kPlugin);
  if (!clock) return false;
  bool open = IsOpen(*clock);
  IKPXFormatLog(board::kProgress, kPlugin, "the site is %s", open ? "open" : "closed");
  g_ticks = clock->EverySecond([clock, open]() mutable {
    if (IsOpen(*clock) == open) return;
    open = !open;
    IKPXFormatLog(board::kProgress, kPlugin, "the site %s", open ? "opens" : "closes");
  });
  return true;
}

bool UnInit() {
  g_ticks.reset();
  return true;
}
