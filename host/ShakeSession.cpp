#include "host/ShakeSession.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

#include "host/PluginHeads.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessInfo.h"
#include "reference/os/ProcessPath.h"
#include "reference/os/UserFolders.h"
#include "workbench/check/ProductReader.h"
#include "workbench/output/Text.h"

namespace fs = std::filesystem;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kTick{50};
constexpr double kFirstStartLimit = 60;  // seconds
constexpr double kStopLimit = 20;        // without progress of the stop
constexpr double kUntilKilled = 60;      // after both limits

/// The folder, without a separator behind it, so that every spelling gives the same path.
fs::path BinFolder(const std::string& option) {
  const fs::path bin =
      option.empty() ? PathFromLocal(ProcessPath()).parent_path() : PathFromLocal(option);
  return fs::weakly_canonical(fs::absolute(bin) / "x").parent_path();
}

fs::path RecordsFolder(const std::string& keep) {
  if (!keep.empty()) return fs::absolute(PathFromLocal(keep));
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  return fs::temp_directory_path() / fmt::format("tev-shake-{}-{}", ProcessNumber(), now);
}

/// Why a run has no plugins.
std::string FailureOf(const FlightRecord& record) {
  for (const RunEvent& event : record.events) {
    if (event.kind == RunEvent::Kind::kEnd || event.kind == RunEvent::Kind::kCrash) {
      return event.text;
    }
  }
  return "its record does not say how it ended";
}

std::vector<std::string> Started(const std::vector<PluginHead>& plugins) {
  std::vector<std::string> started;
  for (const PluginHead& plugin : plugins) {
    if (plugin.kind != "executable" && plugin.kind != "driver") started.push_back(plugin.id);
  }
  return started;
}

/// The product's folder as the text names it: by the words of --bin where they lead to it.
std::string ShownFolder(const std::string& option, const fs::path& bin) {
  const fs::path given = PathFromLocal(option);
  const bool isPlain = given.has_filename() && given.filename() != "." && given.filename() != "..";
  const fs::path folder = isPlain ? given.parent_path() : bin.parent_path();
  return folder.empty() ? std::string() : LocalFromPath((folder / "").generic_string());
}

/// The line at which a dependency of the description would be added.
int DeclarationLine(const CheckedFile& file) {
  for (const XmlNode& node : file.tree.root.children) {
    if (node.name == "DependencyList") return node.place.line;
  }
  return file.tree.root.place.line;
}

}  // namespace

ShakeSession::ShakeSession(const Options& options, HostContext& context)
    : m_options(options),
      m_context(context),
      m_screen(context.output, options.color),
      m_bin(BinFolder(options.bin)),
      m_folder(RecordsFolder(options.shake.keep)),
      m_begin(std::chrono::steady_clock::now()) {
  TakeLock();
  fs::create_directories(m_folder);
}

ShakeSession::~ShakeSession() {
  std::error_code ignored;
  if (m_options.shake.keep.empty()) fs::remove_all(m_folder, ignored);
}

/// Two runs of a product at the same time would get in each other's way.
void ShakeSession::TakeLock() {
  const fs::path state = UserStateFolder();
  if (state.empty()) return;
  const fs::path folder = RecordFolder(state, m_bin).Path();
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) return;
  m_lock = FileLock::TryLock(folder / "lock");
  if (!m_lock) {
    throw UsageError("another HUB runs the product in " + LocalFromPath(m_bin) +
                     "; stop it first: runs at the same time get in each other's way");
  }
}

ShakeReport ShakeSession::Make() {
  MakeFirstRun();
  MakePlannedRuns();
  MakeExperiments();
  m_screen.Finish(RunState());
  m_report.analysis = Analyse(m_plugins, m_runs);
  m_report.toolVersion = TEV_VERSION;
  m_report.bin = m_options.bin;
  m_report.shownFolder = ShownFolder(m_options.bin, m_bin);
  m_report.folder = LocalFromPath(m_bin.generic_string());
  m_report.plugins = m_started.size();
  m_report.runs = m_runs.size();
  m_report.runsNotMade = m_planned - m_made;
  m_report.seconds = Seconds();
  if (m_report.HasFindings()) AddPlaces(m_report);
  return std::move(m_report);
}

/// A run without delays. It shows how long the start takes.
void ShakeSession::MakeFirstRun() {
  const std::optional<FlightRecord> record = RunOnce(PlannedRun());
  if (!m_report.stoppedBy.empty()) return;
  if (!record) throw UsageError("the first run of the product left no record that can be read");
  m_plugins = record->plugins;
  m_started = Started(m_plugins);
  m_report.productName = record->head.product;
  m_report.productVersion = record->head.productVersion;
  if (m_started.empty()) {
    throw UsageError("the product cannot be run in other orders: " + FailureOf(*record));
  }
  m_runs.push_back(MakeShakeRun(*record));
  m_startMs = m_runs.front().startNs / 1'000'000;
  m_delay = LongestDelay(m_startMs);
}

void ShakeSession::MakePlannedRuns() {
  const auto plan = PlanRuns(m_started, static_cast<std::size_t>(m_options.shake.runs),
                             static_cast<std::uint64_t>(m_options.shake.seed), m_delay);
  m_planned += plan.size();
  for (const PlannedRun& run : plan) {
    if (!MayGoOn()) return;
    AddRun(run);
  }
}

/// Delays one plugin alone, as long as the runs so far leave a question open.
void ShakeSession::MakeExperiments() {
  std::set<std::string> tried;
  const auto most = static_cast<std::size_t>(m_options.shake.runs);
  while (MayGoOn() && tried.size() < most) {
    const std::vector<std::string> wanted = Analyse(m_plugins, m_runs).experiments;
    const auto next = std::find_if(wanted.begin(), wanted.end(), [&](const std::string& plugin) {
      return tried.count(plugin) == 0;
    });
    if (next == wanted.end()) return;
    tried.insert(*next);
    m_planned += kExperimentRuns;
    for (std::size_t i = 0; i < kExperimentRuns && MayGoOn(); ++i) {
      AddRun(DelayAlone(*next, m_delay));
    }
  }
}

bool ShakeSession::MayGoOn() const {
  return m_report.stoppedBy.empty() && Seconds() < m_options.seconds.value_or(600);
}

void ShakeSession::AddRun(const PlannedRun& run) {
  const std::optional<FlightRecord> record = RunOnce(run);
  if (!record || record->plugins.empty()) return;
  ShakeRun made = MakeShakeRun(*record);
  made.options = CommandText(run.options);
  made.alone = run.alone;
  m_runs.push_back(std::move(made));
}

/// Runs the product once. None when the run was stopped or its record cannot be read.
std::optional<FlightRecord> ShakeSession::RunOnce(const PlannedRun& run) {
  const fs::path file = m_folder / fmt::format("{:03}.jsonl", m_made + 1);
  {
    ChildProcess child(Settings(run, file));
    AwaitEnd(child);
  }
  if (!m_report.stoppedBy.empty()) return std::nullopt;
  ++m_made;
  try {
    return ReadFlightRecord(file);
  } catch (const std::runtime_error&) {
    ++m_report.badRecords;
    return std::nullopt;
  }
}

ChildSettings ShakeSession::Settings(const PlannedRun& run, const fs::path& record) const {
  ChildSettings settings;
  settings.program = PathFromLocal(ProcessPath());
  settings.arguments = {"run",
                        "--bin",
                        LocalFromPath(m_bin),
                        "--module",
                        std::to_string(m_options.module),
                        "--until-up",
                        "--start-timeout",
                        fmt::format("{:.3f}", StartLimit()),
                        "--stop-timeout",
                        fmt::format("{:g}", kStopLimit),
                        "--state",
                        LocalFromPath(fs::path(record).replace_extension("state")),
                        "--record",
                        LocalFromPath(record)};
  if (m_options.workers != 0) {
    settings.arguments.insert(settings.arguments.end(),
                              {"--workers", std::to_string(m_options.workers)});
  }
  settings.arguments.insert(settings.arguments.end(), run.options.begin(), run.options.end());
  return settings;
}

/// Waits for the end of a run. Passes the first stop request on; kills the run at the second one,
/// and when it goes on long after its own limits.
void ShakeSession::AwaitEnd(ChildProcess& child) {
  const double deadline = Seconds() + StartLimit() + kStopLimit + kUntilKilled;
  ShowProgress();
  while (!child.WaitFor(kTick)) {
    ShowProgress();
    if (Seconds() > deadline) child.Kill();
    const auto request = m_context.stop.WaitFor(milliseconds(0));
    if (!request) continue;
    const bool isFirst = m_report.stoppedBy.empty();
    m_report.stoppedBy = Name(*request);
    if (!isFirst || !child.RequestStop()) child.Kill();
  }
}

/// Shows, on a terminal, which run goes on and about how long the others will take.
void ShakeSession::ShowProgress() {
  if (m_options.shake.format != "text" || m_screen.Columns() == 0) return;
  std::string text = fmt::format("run {} of {}", m_made + 1, std::max(m_planned, m_made + 1));
  if (m_made > 1) {
    const double each = Seconds() / static_cast<double>(m_made);
    text += fmt::format(", about {:.0f} s left", each * static_cast<double>(m_planned - m_made));
  }
  m_screen.Update(RunState(), m_report.stoppedBy.empty() ? text : text + ", stopping");
}

double ShakeSession::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_begin).count();
}

/// The time that a run's start may take, in seconds. The first run shows how long that is.
double ShakeSession::StartLimit() const {
  const double startSeconds = static_cast<double>(m_startMs) * 1e-3;
  const double usual = m_runs.empty() ? kFirstStartLimit : 10 + 5 * startSeconds;
  return m_options.startTimeout.value_or(usual) + static_cast<double>(m_delay) * 1e-3;
}

/// Adds where the plugins that miss a dependency declare theirs.
void ShakeSession::AddPlaces(ShakeReport& report) const {
  const auto place = FindProduct(m_bin, SystemNames());
  if (!place) return;
  const auto product = ReadCheckedProduct(*place, SystemNames(), m_options.module);
  for (const MissingDependency& missing : report.analysis.missing) {
    const Description* description = product->Kept(missing.plugin);
    for (const Description& other : product->descriptions) {
      if (description == nullptr && other.id == missing.plugin) description = &other;
    }
    if (description == nullptr) continue;
    report.places[missing.plugin] = {description->file->readName,
                                     DeclarationLine(*description->file)};
  }
}
