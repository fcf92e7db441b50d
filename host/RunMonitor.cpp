#include "host/RunMonitor.h"

#include <utility>

#include "host/CrashReport.h"
#include "host/FixedText.h"
#include "host/LoadReasons.h"
#include "host/RunClock.h"
#include "reference/base/Log.h"
#include "reference/os/Threads.h"
#include "workbench/record/FrameLog.h"

namespace {

constexpr char kHostModule[] = "host";
constexpr char kLoaderModule[] = "platform.os";

bool IsNote(FrameEvent::Kind kind) {
  using Kind = FrameEvent::Kind;
  switch (kind) {
    case Kind::kInitRefused:
    case Kind::kStepThrew:
    case Kind::kStepThrewNoException:
    case Kind::kRequiredFileUnreadable:
    case Kind::kPluginDropped:
    case Kind::kTypeUnknown:
    case Kind::kNoPoolForStart:
    case Kind::kNoPoolForStop:
    case Kind::kLpcStopFailed:
    case Kind::kPlatformInitFailed:
      return true;
    default:
      return false;
  }
}

RunEventSource::Where Now() {
  return {SteadyNanoseconds(), ThreadNumber()};
}

/// The loader's last message on this thread.
thread_local FixedText t_loaderMessage;

/// Adds a reason that is found by reading files. Called without the monitor's lock, so that other
/// threads do not have to wait for the file system.
void AddReason(FrameEvent& event) {
  switch (event.kind) {
    case FrameEvent::Kind::kLoadBegin:
      t_loaderMessage.Set({});
      return;
    case FrameEvent::Kind::kLoadFailed:
      event.reason = BetterLoadReason(event.path, std::string(t_loaderMessage.View()));
      return;
    case FrameEvent::Kind::kInitMissing:
      event.reason = MangledExport(LoadedLibrary(), "Init");
      return;
    default:
      return;
  }
}

/// Names the thread after the plugin whose code it runs, for `top` and debuggers.
void NameThreadAfter(const FrameEvent& event) {
  const bool begins = event.kind == FrameEvent::Kind::kLoadTaskBegin ||
                      event.kind == FrameEvent::Kind::kUnloadTaskBegin;
  if (begins) NameThread(event.plugin);
  if (event.kind == FrameEvent::Kind::kPlatformStarted) NameThread("platform");
}

}  // namespace

RunMonitor::RunMonitor(LineSink sink, StartHook beforeStart)
    : m_sink(std::move(sink)), m_beforeStart(std::move(beforeStart)) {
  SetLogObserver([this](int level, const std::string& module, const std::string& text) {
    OnLogLine(level, module, text);
  });
  SetTaskObserver([this](const TaskEvent& event) { OnTask(event); });
}

RunMonitor::~RunMonitor() {
  SetTaskObserver({});
  SetLogObserver({});
}

void RunMonitor::Begin(const RunHead& head) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_sink) m_sink(RecordLine(head));
}

void RunMonitor::SetPlugins(const std::vector<PluginHead>& plugins) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const PluginHead& plugin : plugins) {
    m_state.AddPlugin(plugin);
    if (m_sink) m_sink(RecordLine(plugin));
  }
  m_source.SetPlugins(plugins);
}

void RunMonitor::Add(RunEvent event) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const RunEventSource::Where here = FlushPosted();
  if (event.thread == 0) {
    event.nanoseconds = here.nanoseconds;
    event.thread = here.thread;
  }
  AddEvents({std::move(event)});
}

RunState RunMonitor::State() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_state;
}

std::vector<FrameEvent> RunMonitor::Notes() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_notes;
}

void RunMonitor::OnLogLine(int level, const std::string& module, const std::string& text) {
  if (module == kHostModule) return;
  std::optional<FrameEvent> event = ParseFrameLog(level, module, text);
  if (event) {
    TrackPluginCode(*event);
    NameThreadAfter(*event);
    if (m_beforeStart && event->kind == FrameEvent::Kind::kLoadTaskBegin) {
      m_beforeStart(event->plugin);
    }
  }
  if (module == kLoaderModule) t_loaderMessage.Set(text);
  if (event) AddReason(*event);
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (event) {
    if (IsNote(event->kind)) m_notes.push_back(*event);
    AddEvents(m_source.OnFrameEvent(FlushPosted(), *event));
  } else if (module == kLoaderModule) {
    AddEvents(m_source.OnLoaderMessage(FlushPosted(), text));
  } else {
    AddEvents(m_source.OnOtherLine(FlushPosted(), "[" + module + "] " + text));
  }
}

void RunMonitor::OnTask(const TaskEvent& event) {
  if (event.kind == TaskEvent::Kind::kPosted) return OnTaskPosted(event.task);
  if (event.kind == TaskEvent::Kind::kEnded) NameThread("idle");
  const std::lock_guard<std::mutex> lock(m_mutex);
  switch (event.kind) {
    case TaskEvent::Kind::kBegun:
      return AddEvents(m_source.OnTaskBegun(FlushPosted(), event.task));
    case TaskEvent::Kind::kEnded:
      return AddEvents(m_source.OnTaskEnded(FlushPosted(), event.task));
    default:
      return;
  }
}

/// The thread that posts tasks must not wait here, since the start of all plugins waits for it. If
/// another thread holds the lock, the event stays in m_posted until the next call of FlushPosted,
/// which comes at the latest when the task begins.
void RunMonitor::OnTaskPosted(std::uint64_t task) {
  {
    const std::lock_guard<std::mutex> lock(m_postedMutex);
    m_posted.emplace_back(Now(), task);
  }
  const std::unique_lock<std::mutex> lock(m_mutex, std::try_to_lock);
  if (lock) FlushPosted();
}

/// Makes events of the tasks posted so far, and returns the caller's time and thread. The time is
/// read under the same lock as the list of tasks, so that the events are in the order of time.
RunEventSource::Where RunMonitor::FlushPosted() {
  std::vector<std::pair<RunEventSource::Where, std::uint64_t>> posted;
  RunEventSource::Where here;
  {
    const std::lock_guard<std::mutex> lock(m_postedMutex);
    posted.swap(m_posted);
    here = Now();
  }
  for (const auto& [where, task] : posted) AddEvents(m_source.OnTaskPosted(where, task));
  return here;
}

void RunMonitor::AddEvents(const std::vector<RunEvent>& events) {
  std::string lines;
  for (const RunEvent& event : events) {
    m_state.Apply(event);
    if (!m_sink || m_sinkClosed) continue;
    lines.append(lines.empty() ? "" : "\n").append(RecordLine(event));
    m_sinkClosed = event.kind == RunEvent::Kind::kEnd || event.kind == RunEvent::Kind::kCrash;
  }
  if (!lines.empty()) m_sink(lines);
}
