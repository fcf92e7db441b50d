// video.platform: the sub platform of everything with pictures: hands out stream channels.

#include <bitset>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "video.platform";

class Channels : public ChannelService {
 public:
  int Take() override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
      if (m_taken[i]) continue;
      m_taken.set(i);
      const auto channel = static_cast<int>(i);
      IKPXFormatLog(board::kProgress, kPlugin, "channel %d is taken", channel);
      return channel;
    }
    IKPXFormatLog(board::kTolerated, kPlugin, "no channel is free");
    return -1;
  }

  void Give(int channel) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_taken.reset(static_cast<std::size_t>(channel));
    IKPXFormatLog(board::kProgress, kPlugin, "channel %d is given back", channel);
  }

 private:
  std::mutex m_mutex;
  std::bitset<64> m_taken;  // guarded by m_mutex
};

}  // namespace

bool Init() {
  board::Publish<ChannelService>(std::make_shared<Channels>());
  return true;
}

bool UnInit() {
  board::Withdraw(ChannelService::kName);
  return true;
}
