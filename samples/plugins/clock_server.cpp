// clock.server: the time of day and of the week, for schedules.

#include <chrono>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr std::int64_t kMinutesOfADay = 1440;

class Clock : public ClockService {
 public:
  int MinuteOfDay() const override { return static_cast<int>(Minutes() % kMinutesOfADay); }

  // 1 January 1970 was a Thursday.
  int DayOfWeek() const override { return static_cast<int>((Minutes() / kMinutesOfADay + 4) % 7); }

 private:
  static std::int64_t Minutes() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::minutes>(now).count();
  }
};

}  // namespace

bool Init() {
  board::Publish<ClockService>(std::make_shared<Clock>());
  const auto clock = board::Find<ClockService>();
  return clock->MinuteOfDay() < 24 * 60 && clock->DayOfWeek() < 7;
}

bool UnInit() {
  board::Withdraw(ClockService::kName);
  return true;
}
