// video.server: records the cameras. The slow one among the sample's plugins: its Init waits for a
// recorder.

#include <chrono>
#include <map>
#include <mutex>
#include <thread>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

constexpr char kPlugin[] = "video.server";

using Cameras = std::vector<DeviceService::Device>;

class Video : public VideoService {
 public:
  Video(std::shared_ptr<ChannelService> channels, Cameras cameras)
      : m_channels(std::move(channels)), m_cameras(std::move(cameras)) {}

  std::size_t Record(const std::string& site) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::size_t before = m_recordings.size();
    for (const auto& camera : m_cameras) {
      if (camera.site != site || m_recordings.count(camera.id) != 0) continue;
      const int channel = m_channels->Take();
      if (channel < 0) break;
      m_recordings[camera.id] = channel;
      IKPXFormatLog(board::kProgress, kPlugin, "%s records on channel %d", camera.id.c_str(),
                    channel);
    }
    return m_recordings.size() - before;
  }

  void EndRecording(const std::string& site) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& camera : m_cameras) {
      const auto recording = m_recordings.find(camera.id);
      if (camera.site != site || recording == m_recordings.end()) continue;
      m_channels->Give(recording->second);
      m_recordings.erase(recording);
      IKPXFormatLog(board::kProgress, kPlugin, "%s no longer records", camera.id.c_str());
    }
  }

 private:
  const std::shared_ptr<ChannelService> m_channels;
  const Cameras m_cameras;
  std::mutex m_mutex;
  std::map<std::string, int> m_recordings;  // by camera: its channel; guarded by m_mutex
};

/// Stands in for the wait until the recorder's disks have spun up.
void WaitForRecorder() {
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));
}

}  // namespace

bool Init() {
  Cameras cameras;
  {
    // Released before the wait: a stop does not wait for an Init that runs, and may unmap the code
    // of the plugins that it depends on.
    const auto devices = board::Need<DeviceService>(kPlugin);
    if (!devices) return false;
    cameras = devices->OfKind("camera");
  }
  IKPXFormatLog(board::kProgress, kPlugin, "waits for the recorder");
  WaitForRecorder();
  const auto channels = board::Need<ChannelService>(kPlugin);
  if (!channels) return false;
  IKPXFormatLog(board::kProgress, kPlugin, "%s cameras are ready",
                std::to_string(cameras.size()).c_str());
  board::Publish<VideoService>(std::make_shared<Video>(channels, std::move(cameras)));
  return true;
}

bool UnInit() {
  board::Withdraw(VideoService::kName);
  return true;
}
