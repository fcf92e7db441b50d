// notification.server: informs the users who may see an alarm.

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "notification.server";

Subscription g_alarms;

}  // namespace

bool Init() {
  const auto users = board::Need<UserService>(kPlugin);
  const auto bus = board::Need<EventBusService>(kPlugin);
  if (!users || !bus) return false;
  g_alarms = bus->Subscribe(AlarmService::kBegin, [users](const EventBusService::Event& event) {
    for (const std::string& user : users->With("alarm.see")) {
      IKPXFormatLog(board::kProgress, kPlugin, "to %s: %s, %02d:%02d UTC", user.c_str(),
                    event.text.c_str(), event.minuteOfDay / 60, event.minuteOfDay % 60);
    }
  });
  return true;
}

bool UnInit() {
  g_alarms.reset();
  return true;
}
