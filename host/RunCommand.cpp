#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <thread>

#include "host/Commands.h"
#include "host/FailureReason.h"
#include "host/FrameLibrary.h"
#include "host/LifeReport.h"
#include "host/PluginLives.h"
#include "host/ProgressPrinter.h"
#include "host/RecordJson.h"
#include "reference/base/Log.h"
#include "reference/base/ThreadPools.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kUpdate{100};

std::int64_t MillisecondsSince(Clock::time_point begin) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

/// One life of the product, from Frame_Init to Frame_UnInit.
class Life {
 public:
  Life(const Options& options, StopSignal& stop)
      : m_options(options), m_stop(stop), m_frame(FrameLibrary::PathBesideProgram()) {
    // By value where it outlives this object: a plugin that never returned may log to the last.
    SetLogObserver([this](int level, const std::string& module, const std::string& text) {
      m_reason.OnLogLine(level, module, text);
      m_lives.OnLogLine(level, module, text);
    });
  }

  ~Life() { SetLogObserver({}); }
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

  ExitStatus Run() {
    m_initResult = m_frame.Init();
    if (m_initResult != 0) {
      std::cerr << "HUB: " << m_reason.Sentence() << std::endl;
    } else {
      ExpectPlugins();
      StartAndStay();
      Stop();
      m_frame.UnInit();
    }
    const bool allWell = m_initResult == 0 && StartCallbackResult().value_or(false);
    Show();
    return allWell ? kOk : kFrameFailed;
  }

 private:
  void ExpectPlugins() {
    const std::optional<ProductModel> model = SnapshotPlatform().productModel;
    if (!model) return;
    for (const PluginDescription& plugin : model->ServerPluginDescriptions) {
      m_lives.Expect(plugin.ID);
    }
    for (const SubPlatformEntry& subPlatform : model->SubPlatforms) m_lives.Expect(subPlatform.ID);
  }

  void StartAndStay() {
    const Clock::time_point begin = Clock::now();
    m_startResult = m_frame.Start();
    if (m_startResult != 0) return;
    bool up = false;
    while (!m_stop.WaitFor(kUpdate) && !TimeIsUp(begin)) {
      if (!m_options.json) m_printer.Update();
      if (up || !StartCallbackResult()) continue;
      up = true;
      m_startMs = MillisecondsSince(begin);
      SayUp();
    }
    if (m_startMs < 0) m_startMs = MillisecondsSince(begin);
  }

  bool TimeIsUp(Clock::time_point begin) const {
    if (!m_options.seconds) return false;
    return std::chrono::duration<double>(Clock::now() - begin).count() >= *m_options.seconds;
  }

  void SayUp() {
    if (m_options.json) return;
    m_printer.Finish();
    m_printer.Say(
        "Up after " + std::to_string(m_startMs) + " ms. " +
        (m_options.seconds ? "Stops by itself; Ctrl-C stops it now." : "Ctrl-C stops it."));
  }

  /// Stops the frame while another thread keeps showing; a further Ctrl-C gives up on the plugins.
  void Stop() {
    const Clock::time_point begin = Clock::now();
    if (!m_options.json) m_printer.Finish();
    std::atomic<bool> stopped{false};
    std::thread watcher([&] {
      while (!stopped) {
        if (m_stop.WaitFor(kUpdate)) {
          std::cerr << "HUB: stopped a second time; leaving without the plugins that still run\n";
          std::_Exit(kFrameFailed);
        }
        if (!m_options.json) m_printer.Update();
      }
    });
    m_frame.Stop();
    stopped = true;
    watcher.join();
    m_stopMs = MillisecondsSince(begin);
    if (!m_options.json) m_printer.Finish();
  }

  void Show() const {
    if (m_options.json) {
      std::cout << AsJson().dump(2, ' ', false, Json::error_handler_t::replace) << std::endl;
    } else if (m_initResult == 0) {
      std::cout << "\n" << LifeTable(m_lives.Snapshot(), m_startMs, m_stopMs) << std::flush;
    }
  }

  Json AsJson() const {
    const PlatformRecord platform = SnapshotPlatform();
    Json timing = Json::array();
    for (const TimingLine& line : platform.timing) {
      timing.push_back({{"text", line.text}, {"ms", line.milliseconds}});
    }
    Json json;
    json["Frame_Init"] = m_initResult;
    json["Frame_Start"] = m_startResult ? Json(*m_startResult) : Json();
    json["CallbackResult"] = platform.callbackResult ? Json(*platform.callbackResult) : Json();
    json["LoadState"] = platform.loadState ? Json(*platform.loadState) : Json();
    json["Handles"] = platform.handles;
    json["Timing"] = std::move(timing);
    json["Notified"] = SnapshotLpc().notified;
    return json;
  }

  const Options& m_options;
  StopSignal& m_stop;
  FailureReason m_reason;
  PluginLives m_lives;
  ProgressPrinter m_printer{m_lives};
  FrameLibrary m_frame;

  std::int32_t m_initResult = 0;
  std::optional<std::int32_t> m_startResult;
  std::int64_t m_startMs = -1;
  std::int64_t m_stopMs = -1;
};

}  // namespace

ExitStatus RunCommand(const Options& options, StopSignal& stop) {
  const ExitStatus status = Life(options, stop).Run();
  if (UnfinishedTasks() != 0) {
    // Such a plugin's code would run on into the process's own end.
    std::cerr << "HUB: a plugin never returned; leaving without it" << std::endl;
    std::_Exit(status);
  }
  return status;
}
