// video.server: the index of recordings. It waits for the first heartbeat of the recorder, which
// takes its time, and is the slow one among the sample's plugins.

#include <chrono>
#include <future>
#include <map>
#include <thread>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "sdk/plugin/TevPlugin.h"

namespace {

class Video : public VideoService {
 public:
  void Add(const std::string& camera, std::int64_t begin, std::int64_t end, int recording) {
    m_recordings[camera][begin] = {end, recording};
  }

  int RecordingAt(const std::string& camera, std::int64_t second) const override {
    const auto list = m_recordings.find(camera);
    if (list == m_recordings.end()) return -1;
    auto next = list->second.upper_bound(second);
    if (next == list->second.begin()) return -1;
    --next;
    return second < next->second.first ? next->second.second : -1;
  }

 private:
  // By camera, by begin: end and number.
  std::map<std::string, std::map<std::int64_t, std::pair<std::int64_t, int>>> m_recordings;
};

/// The recorder beside the host, which gives its first heartbeat when its disks have spun up.
class Recorder {
 public:
  Recorder()
      : m_thread([this] {
          std::this_thread::sleep_for(std::chrono::milliseconds(1500));
          m_heartbeat.set_value();
        }) {}

  ~Recorder() { m_thread.join(); }

  bool WaitForHeartbeat(std::chrono::seconds limit) {
    return m_heartbeat.get_future().wait_for(limit) == std::future_status::ready;
  }

 private:
  std::promise<void> m_heartbeat;
  std::thread m_thread;  // behind the promise, which it uses
};

std::unique_ptr<Recorder> g_recorder;

/// False without devices. Lets go of them again: a stop does not wait for an Init that runs, and
/// may unmap their code while this one waits for the recorder.
bool AddRecordings(Video& video) {
  const auto devices = board::Find<DeviceService>();
  if (!devices) return false;
  int recording = 0;
  for (const DeviceService::Device& camera : devices->OfKind("camera")) {
    video.Add(camera.id, 0, 3600, ++recording);
    video.Add(camera.id, 7200, 10800, ++recording);
  }
  return true;
}

}  // namespace

bool Init() {
  const auto video = std::make_shared<Video>();
  if (!AddRecordings(*video)) return false;
  g_recorder = std::make_unique<Recorder>();
  board::Publish<VideoService>(video);
  return g_recorder->WaitForHeartbeat(std::chrono::seconds(10)) &&
         video->RecordingAt("cam-1", 7300) == 2 && video->RecordingAt("cam-1", 5000) == -1;
}

bool UnInit() {
  board::Withdraw(VideoService::kName);
  g_recorder.reset();
  return true;
}
