#include "host/ReplayRuns.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "host/ReplayProduct.h"
#include "reference/os/LocalText.h"
#include "reference/os/ProcessPath.h"
#include "workbench/output/Text.h"

namespace fs = std::filesystem;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kTick{10};
constexpr std::int64_t kLook = 200;       // milliseconds between two looks of the frame
constexpr std::int64_t kSpare = 2000;     // milliseconds that a run may take longer than the usual
constexpr std::int64_t kLeastApart = 10;  // milliseconds: earlier and later begins than this count
constexpr int kUsualRuns = 2;

fs::path NewFolder() {
  std::random_device random;
  const fs::path folder = fs::temp_directory_path() /
                          ("HUB.replay." + std::to_string(random()) + std::to_string(random()));
  fs::create_directories(folder);
  return fs::canonical(folder);
}

std::string Seconds(std::int64_t duration) {
  const std::string fraction = std::to_string(duration % 1000);
  return std::to_string(duration / 1000) + "." + std::string(3 - fraction.size(), '0') + fraction;
}

std::string EndText(const ChildEnd& end, bool killed) {
  if (killed) return "killed, since it did not end";
  return (end.crashed ? "ended by the crash with " : "exit status ") + std::to_string(end.code);
}

/// What a plugin with the fault does, for a sentence.
std::string Does(const Fault& fault) {
  switch (fault.kind) {
    case Fault::Kind::kFail:
      return "fails";
    case Fault::Kind::kHang:
      return "hangs";
    case Fault::Kind::kCrash:
      return "crashes";
    default:
      return "takes " + std::to_string(fault.milliseconds) + " ms longer";
  }
}

}  // namespace

ReplayRuns::ReplayRuns(Replay replay, const Fault& fault, std::vector<std::string> arguments,
                       HostContext& context)
    : m_replay(std::move(replay)),
      m_fault(fault),
      m_arguments(std::move(arguments)),
      m_context(context),
      m_folder(NewFolder()) {}

ReplayRuns::~ReplayRuns() {
  std::error_code ignored;
  fs::remove_all(m_folder, ignored);
}

ExitStatus ReplayRuns::Run() {
  for (const std::string& sentence : MendHangsAndCrashes(m_replay)) {
    WriteSentence(sentence + ".");
  }
  WriteReplayProduct(m_folder / "product", m_replay, "");
  if (!RunWithoutFault()) return kCutShort;
  for (std::size_t i = 0; i < m_replay.plugins.size(); ++i) {
    if (!RunWithFault(i)) return kCutShort;
  }
  SortByHarm(m_harms);
  m_context.output.Write("\n" + HarmTable(m_harms, m_without));
  WriteSentence(
      "This is what the frame does: who waits, and who starts although a plugin that it depends on "
      "has failed. What the real plugins would do then is not known to stubs.");
  return kOk;
}

bool ReplayRuns::RunWithoutFault() {
  std::optional<Timeline> first;
  for (int i = 0; i < kUsualRuns; ++i) {
    std::optional<Outcome> outcome = RunOnce(LongestRun());
    if (!outcome) return false;
    m_without = std::move(outcome->timeline);
    if (!m_without.state.Up()) {
      throw UsageError(
          "the product is not up without a fault; HUB replay RECORD --output DIR "
          "writes it to see why");
    }
    if (first) m_apart = std::max(kLeastApart, BeginsApart(*first, m_without));
    first = m_without;
    if (i + 1 == kUsualRuns) {
      m_context.output.Write("Without a fault: up after " +
                             std::to_string(m_without.state.Up()->milliseconds) + " ms; " +
                             EndText(outcome->end, outcome->killed) + ".\n");
    }
  }
  return true;
}

bool ReplayRuns::RunWithFault(std::size_t plugin) {
  const ReplayPlugin& usual = m_replay.plugins[plugin];
  const bool isStub = usual.hasID && usual.library == ReplayPlugin::Library::kStub;
  if (!isStub) {
    m_context.output.Write(ShownID(usual.id) + " is left out: it was not loaded in the run.\n");
    return true;
  }
  Replay replay = m_replay;
  AddFault(replay.plugins[plugin], m_fault);
  WriteReplayFile(m_folder / "product", BehaviorFile(replay));
  const std::int64_t slower = m_fault.kind == Fault::Kind::kSlow ? m_fault.milliseconds : 0;
  const std::int64_t limit = m_without.state.Up()->milliseconds + slower + kSpare;
  const std::optional<Outcome> outcome = RunOnce(limit);
  if (!outcome) return false;
  RunHarm harm = CompareRuns(m_without, outcome->timeline, usual.id, m_apart);
  harm.end = EndText(outcome->end, outcome->killed);
  if (m_fault.kind == Fault::Kind::kSlow) {
    harm.begunAnyway.clear();  // if it fails, it does so without the fault too
  } else {
    harm.later.clear();  // it takes the same time: others are later by chance
    harm.upLater = 0;
  }
  WriteSentence(HarmSentence(harm, m_without, Does(m_fault)));
  m_harms.push_back(std::move(harm));
  return true;
}

/// Writes a sentence, wrapped on a terminal.
void ReplayRuns::WriteSentence(const std::string& sentence) {
  Output& output = m_context.output;
  const std::size_t columns = output.IsTerminal() ? static_cast<std::size_t>(output.Columns()) : 0;
  for (const std::string& line : Wrapped(sentence, columns, kSentenceIndent)) {
    output.Write(line + "\n");
  }
}

/// Runs the product as it is in the folder. Nothing when the user has stopped it.
std::optional<ReplayRuns::Outcome> ReplayRuns::RunOnce(std::int64_t upLimit) {
  const fs::path record = m_folder / "run.jsonl";
  std::error_code ignored;
  fs::remove(record, ignored);
  ChildSettings settings;
  settings.program = PathFromLocal(ProcessPath());
  settings.arguments = {"run",
                        "--bin",
                        LocalFromPath(m_folder / "product" / "bin"),
                        "--record",
                        LocalFromPath(record),
                        "--state",
                        LocalFromPath(m_folder / "state"),
                        "--until-up",
                        "--seconds",
                        Seconds(upLimit),
                        "--stop-timeout",
                        Seconds(StopTimeout())};
  settings.arguments.insert(settings.arguments.end(), m_arguments.begin(), m_arguments.end());
  try {
    ChildProcess hub(settings);
    const auto end = steady_clock::now() + milliseconds(upLimit + LongestRun() + StopTimeout());
    std::optional<ChildEnd> ended;
    while (!(ended = hub.WaitFor(kTick)) && steady_clock::now() < end) {
      if (m_context.stop.WaitFor(milliseconds(0))) return std::nullopt;
    }
    const bool killed = !ended;
    if (killed) hub.Kill();
    if (!ended) ended = hub.WaitFor(milliseconds(kSpare));
    return Outcome{MakeTimeline(ReadRecordedRun(record)), ended.value_or(ChildEnd()), killed};
  } catch (const std::runtime_error& error) {  // also std::system_error
    throw UsageError(error.what());
  }
}

/// Milliseconds in which the product is up whatever it waits for: one plugin after the other.
std::int64_t ReplayRuns::LongestRun() const {
  std::int64_t longest = kSpare;
  for (const ReplayPlugin& plugin : m_replay.plugins) {
    for (const EntryBehavior& entry : {plugin.behavior.init, plugin.behavior.uninit}) {
      longest += std::chrono::duration_cast<milliseconds>(entry.duration).count() + kLook;
    }
  }
  return longest;
}

/// Milliseconds after which a plugin does not end its stop any more.
std::int64_t ReplayRuns::StopTimeout() const {
  std::int64_t longest = 0;
  for (const ReplayPlugin& plugin : m_replay.plugins) {
    const auto duration = std::chrono::duration_cast<milliseconds>(plugin.behavior.uninit.duration);
    longest = std::max<std::int64_t>(longest, duration.count());
  }
  return longest + kSpare;
}
