// video.platform: the sub platform of everything with pictures: hands out stream channels.

#include <bitset>

#include "sdk/plugin/TevPlugin.h"

namespace {

class Channels {
 public:
  /// The lowest free channel, or -1.
  int Take() {
    for (std::size_t i = 0; i < m_taken.size(); ++i) {
      if (m_taken[i]) continue;
      m_taken.set(i);
      return static_cast<int>(i);
    }
    return -1;
  }

  void Give(int channel) { m_taken.reset(static_cast<std::size_t>(channel)); }
  bool AllFree() const { return m_taken.none(); }

 private:
  std::bitset<64> m_taken;
};

Channels g_channels;

}  // namespace

bool Init() {
  const int first = g_channels.Take();
  const int second = g_channels.Take();
  g_channels.Give(first);
  const bool lowestFirst = g_channels.Take() == first;
  g_channels.Give(first);
  g_channels.Give(second);
  return lowestFirst;
}

bool UnInit() {
  return g_channels.AllFree();
}
