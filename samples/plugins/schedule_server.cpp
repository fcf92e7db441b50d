// schedule.server: which weekly schedule holds now.

#include <vector>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

/// A span of a week in minutes from Sunday midnight; it may run over the week's end.
struct Span {
  int begin;
  int end;

  bool Holds(int minute) const {
    return begin <= end ? begin <= minute && minute < end : minute >= begin || minute < end;
  }
};

int MinuteOfWeek(int day, int minuteOfDay) {
  return day * 24 * 60 + minuteOfDay;
}

}  // namespace

bool Init() {
  const auto clock = board::Find<ClockService>();
  if (!clock) return false;
  const Span weekend = {MinuteOfWeek(6, 0), MinuteOfWeek(1, 0)};
  const Span week = {MinuteOfWeek(1, 0), MinuteOfWeek(6, 0)};
  const int now = MinuteOfWeek(clock->DayOfWeek(), clock->MinuteOfDay());
  return weekend.Holds(now) != week.Holds(now) && weekend.Holds(MinuteOfWeek(0, 90));
}

bool UnInit() {
  return true;
}
