// video.platform: the sub platform of everything with pictures: hands out stream channels.

#include <bitset>
#include <mutex>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Channels : public ChannelService {
 public:
  int Take() override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
      if (m_taken[i]) continue;
      m_taken.set(i);
      return static_cast<int>(i);
    }
    return -1;
  }

  void Give(int channel) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_taken.reset(static_cast<std::size_t>(channel));
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
