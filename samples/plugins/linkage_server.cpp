// linkage.server: joins alarms to actions: while there is one at a site, its cameras record.

#include <atomic>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "linkage.server";

class Linkage : public LinkageService {
 public:
  Linkage(EventBusService& bus, std::shared_ptr<VideoService> video)
      : m_video(std::move(video)),
        m_begin(
            bus.Subscribe(AlarmService::kBegin, [this](const auto& event) { Act(event.site); })),
        m_over(bus.Subscribe(AlarmService::kOver,
                             [this](const auto& event) { m_video->EndRecording(event.site); })) {}

  void Act(const std::string& site) {
    if (m_video->Record(site) == 0) return;
    ++m_fired;
    IKPXFormatLog(board::kProgress, kPlugin, "alarm at %s: its cameras record", site.c_str());
  }

  int Fired() const override { return m_fired; }

 private:
  const std::shared_ptr<VideoService> m_video;
  std::atomic<int> m_fired{0};
  const Subscription m_begin;
  const Subscription m_over;
};

}  // namespace

bool Init() {
  const auto bus = board::Need<EventBusService>(kPlugin);
  const auto alarms = board::Need<AlarmService>(kPlugin);
  const auto video = board::Need<VideoService>(kPlugin);
  if (!bus || !alarms || !video) return false;
  const auto linkage = std::make_shared<Linkage>(*bus, video);
  // After it has subscribed: an alarm that begins meanwhile is met twice, which does no harm.
  for (const AlarmService::Alarm& alarm : alarms->Open()) linkage->Act(alarm.site);
  board::Publish<LinkageService>(linkage);
  return true;
}

bool UnInit() {
  board::Withdraw(LinkageService::kName);
  return true;
}
