// Runs the product in argv[1] once. A separate process, since a second Frame_Init in one process
// starts nothing. Prints the measurements, one line "name number" for each.
//
//   timed_run PRODUCT                    start and stop
//   timed_run PRODUCT --early            the same, with sleeps that end early
//   timed_run PRODUCT --init             Frame_Init alone
//   timed_run PRODUCT --start [RECORD]   the start alone, with a flight record in this file
//
// Exit status 1, with a sentence on standard error, when the run failed.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <fstream>
#include <iostream>
#include <limits>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/FrameLibrary.h"
#include "host/PluginHeads.h"
#include "host/RunMonitor.h"
#include "reference/base/Log.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/xrt/ExecutablePath.h"
#include "reference/xrt/SleepWaker.h"
#include "sdk/base/path.h"
#include "workbench/record/FlightRecord.h"
#include "workbench/record/FrameLog.h"

namespace {

/// Elapsed time (steady clock) and processor time of the process, in milliseconds.
struct Moment {
  double wall = 0;
  double processor = 0;
};

double Milliseconds(const timeval& time) {
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
}

Moment Now() {
  const auto wall = std::chrono::steady_clock::now().time_since_epoch();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {std::chrono::duration<double, std::milli>(wall).count(),
          Milliseconds(usage.ru_utime) + Milliseconds(usage.ru_stime)};
}

void Print(const std::string& name, const Moment& from, const Moment& to) {
  std::cout << name << "_ms " << to.wall - from.wall << "\n"
            << name << "_cpu_ms " << to.processor - from.processor << "\n";
}

/// Determines from the frame's log when the start has ended, and when the first Init began and the
/// first one ended: the Init of the plugin that all others wait for.
class Watch {
 public:
  Watch() {
    SetLogObserver([this](int level, const std::string& module, const std::string& text) {
      if (const auto event = ParseFrameLog(level, module, text)) OnEvent(event->kind);
    });
  }
  ~Watch() { SetLogObserver({}); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  Moment WaitForStart() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isStarted; });
    return m_started;
  }

  void PrintFirstInit() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Print("first_init", m_initBegun, m_initEnded);
  }

 private:
  void OnEvent(FrameEvent::Kind kind) {
    using Kind = FrameEvent::Kind;
    const std::lock_guard<std::mutex> lock(m_mutex);
    switch (kind) {
      case Kind::kInitBegin:
        if (m_begun++ == 0) m_initBegun = Now();
        return;
      case Kind::kInitSucceeded:
        if (m_ended++ == 0) m_initEnded = Now();
        return;
      case Kind::kStartCallbackEnd:
        m_started = Now();
        m_isStarted = true;
        m_changed.notify_all();
        return;
      default:
        return;
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;

  // Guarded by m_mutex.
  Moment m_initBegun;
  Moment m_initEnded;
  Moment m_started;
  int m_begun = 0;
  int m_ended = 0;
  bool m_isStarted = false;
};

/// A field of the process's status, in KiB.
double StatusField(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == name + ":") {
      double kibibytes = 0;
      status >> kibibytes;
      return kibibytes;
    }
    status.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  throw std::runtime_error("/proc/self/status: no " + name);
}

void Init(const FrameLibrary& frame) {
  if (frame.Init() != 0) throw std::runtime_error("Frame_Init failed");
}

void MeasureInit(const FrameLibrary& frame) {
  std::ofstream("/proc/self/clear_refs") << 5;  // resets the peak to the memory resident now
  const double before = StatusField("VmRSS");
  Init(frame);
  std::cout << "before_kib " << before << "\n"
            << "peak_kib " << StatusField("VmHWM") << "\n"
            << "after_kib " << StatusField("VmRSS") << "\n";
}

void CheckThatAllStarted() {
  const std::size_t plugins = SnapshotPlatform().plugins->size();
  if (const auto states = SnapshotPlatform().loadState; !states || states->size() != plugins) {
    throw std::runtime_error("not every plugin started");
  }
}

/// A monitor whose events go to a flight record.
struct RecordedRun {
  explicit RecordedRun(const std::string& file)
      : record(file), monitor([this](const std::string& line) {
          record.WriteLine(line);
          lines += 1 + std::count(line.begin(), line.end(), '\n');
        }) {}

  void Check() const {
    const RunState state = monitor.State();
    const bool all = std::all_of(
        state.Plugins().begin(), state.Plugins().end(),
        [](const PluginRun& plugin) { return plugin.state == PluginRun::State::kStarted; });
    if (!all || record.LostLines() > 0) throw std::runtime_error("the record is not complete");
  }

  RecordWriter record;
  std::ptrdiff_t lines = 0;  // guarded by the monitor's lock
  RunMonitor monitor;
};

/// Returns with the plugins started. `recordFile`: empty for a start without record and observers.
void MeasureStart(const FrameLibrary& frame, const std::string& recordFile) {
  std::optional<RecordedRun> recorded;
  if (!recordFile.empty()) recorded.emplace(recordFile);
  Init(frame);
  if (recorded) {
    recorded->monitor.SetPlugins(PluginHeads(*SnapshotPlatform().productModel, GetCurExeDir()));
  }
  const Moment begin = Now();
  if (frame.Start() != 0) throw std::runtime_error("Frame_Start failed");
  KPX_Stop();  // waits until the start callback has returned; needs no observer of the log
  const Moment started = Now();
  CheckThatAllStarted();
  if (recorded) recorded->Check();
  Print("start", begin, started);
  if (recorded) std::cout << "lines " << recorded->lines << "\n";
}

void MeasureRun(const FrameLibrary& frame) {
  Init(frame);
  Watch watch;
  const Moment begin = Now();
  if (frame.Start() != 0) throw std::runtime_error("Frame_Start failed");
  const Moment started = watch.WaitForStart();
  CheckThatAllStarted();
  const Moment stopping = Now();
  frame.Stop();
  const Moment stopped = Now();
  frame.UnInit();
  Print("start", begin, started);
  Print("stop", stopping, stopped);
  watch.PrintFirstInit();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 2) throw std::runtime_error("timed_run: name the product's folder");
    ConfigureLog({0, "", 0, 0});
    SetExecutablePath(std::string(argv[1]) + "/bin/HUB");
    const FrameLibrary frame(FrameLibrary::PathBesideProgram());
    const std::string option = argc > 2 ? argv[2] : "";
    if (option == "--init") {
      MeasureInit(frame);
    } else if (option == "--start") {
      MeasureStart(frame, argc > 3 ? argv[3] : "");
    } else {
      EndSleepsEarly(option == "--early");
      MeasureRun(frame);
    }
  } catch (const std::exception& error) {
    std::cerr << error.what() << std::endl;
    return 1;
  }
  return 0;
}
