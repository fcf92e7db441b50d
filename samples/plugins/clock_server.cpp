// clock.server: the time of day and of the week, and a tick every second.

#include <chrono>
#include <cstdint>

#include "samples/board/Board.h"
#include "samples/board/Every.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr std::int64_t kMinutesOfADay = 1440;

class Clock : public ClockService {
 public:
  int MinuteOfDay() const override { return static_cast<int>(Minutes() % kMinutesOfADay); }

  // 1 January 1970 was a Thursday.
  int DayOfWeek() const override { return static_cast<int>((Minutes() / kMinutesOfADay + 4) % 7); }

  Subscription EverySecond(std::function<void()> handler) override {
    return m_listeners.Add(std::move(handler));
  }

 private:
  static std::int64_t Minutes() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::minutes>(now).count();
  }

  Listeners<> m_listeners;
  Every m_ticks{std::chrono::seconds(1), [this] { m_listeners.Call(); }};
};

}  // namespace

bool Init() {
  board::Publish<ClockService>(std::make_shared<Clock>());
  IKPXFormatLog(board::kProgress, "clock.server", "ticks once a second");
  return true;
}

bool UnInit() {
  board::Withdraw(ClockService::kName);
  return true;
}
