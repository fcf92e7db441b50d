#include "workbench/replay/Replay.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "workbench/output/Text.h"
#include "workbench/replay/ReplayNames.h"

namespace {

using Ending = EntryBehavior::Ending;
using Result = PluginSpan::Result;

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::size_t kMostNames = 10;

std::string Quoted(const std::string& id) {
  return "\"" + Escaped(id) + "\"";
}

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

/// Nanoseconds from one time to the other; 0 when either is unknown.
std::int64_t Between(std::int64_t from, std::int64_t to) {
  return from == kUnknown || to == kUnknown ? 0 : std::max<std::int64_t>(to - from, 0);
}

/// The time of loading or unmapping a library, without what a stub itself needs for it.
std::int64_t LibraryTime(std::int64_t from, std::int64_t to) {
  const std::int64_t time = Between(from, to);
  return time < kMillisecond ? 0 : time;
}

/// How a process ended, by the sentence of its crash.
Ending CrashEnding(const std::string& sentence) {
  if (Contains(sentence, "exit(") || Contains(sentence, "ExitProcess")) return Ending::kExits;
  for (const char* word : {"SIGABRT", "abort(", "std::terminate", "was not caught"}) {
    if (Contains(sentence, word)) return Ending::kAborts;
  }
  return Ending::kSegfaults;
}

/// Makes the stubs' behavior from what the plugins did.
class BehaviorMaker {
 public:
  BehaviorMaker(const Timeline& timeline, double speed) : m_timeline(timeline), m_speed(speed) {}

  EntryBehavior Init(std::size_t plugin) const {
    const PluginSpan& span = m_timeline.start.spans[plugin];
    const std::int64_t loading = LibraryTime(span.begin, span.loaded);
    if (const RunEvent* crash = CrashOf(plugin, RunPhase::kStart)) {
      const std::int64_t since = span.codeBegin == kUnknown ? span.begin : span.codeBegin;
      return {Scaled(loading + Between(since, TimeOf(*crash))), CrashEnding(crash->text)};
    }
    const std::string& reason = m_timeline.State(plugin).reason;
    EntryBehavior entry{Scaled(loading + Between(span.codeBegin, span.codeEnd)), Ending::kSucceeds};
    const bool isUnfinished = span.result == Result::kNotReturned;
    const bool hasReturned = span.codeEnd != kUnknown;
    if (isUnfinished && !hasReturned) entry.ending = Ending::kHangs;
    const bool failed = m_timeline.State(plugin).state == PluginRun::State::kInitFailed;
    if (span.result == Result::kFailed || (isUnfinished && hasReturned && failed)) {
      entry.ending = Contains(reason, "its Init threw") ? Ending::kThrows : Ending::kFails;
    }
    return entry;
  }

  EntryBehavior UnInit(std::size_t plugin) const {
    const PluginSpan& span = m_timeline.stop.spans[plugin];
    if (const RunEvent* crash = CrashOf(plugin, RunPhase::kStop)) {
      return {Scaled(Between(span.codeBegin, TimeOf(*crash))), CrashEnding(crash->text)};
    }
    const std::int64_t unmapping = LibraryTime(span.codeEnd, span.end);
    EntryBehavior entry{Scaled(Between(span.codeBegin, span.codeEnd) + unmapping),
                        Ending::kSucceeds};
    if (span.codeBegin == kUnknown) return entry;
    if (span.result == Result::kNotReturned) entry.ending = Ending::kHangs;
    if (span.result == Result::kRefused) {
      const std::string& reason = m_timeline.State(plugin).stopReason;
      entry.ending = Contains(reason, "its UnInit threw") ? Ending::kThrows : Ending::kFails;
    }
    return entry;
  }

 private:
  const RunEvent* CrashOf(std::size_t plugin, const char* phase) const {
    const std::optional<RunEvent>& crash = m_timeline.state.Crash();
    if (!crash || crash->phase != phase) return nullptr;
    return crash->plugin == m_timeline.plugins[plugin].id ? &*crash : nullptr;
  }

  std::int64_t TimeOf(const RunEvent& event) const {
    return event.nanoseconds - m_timeline.run.record.head.nanoseconds;
  }

  std::chrono::microseconds Scaled(std::int64_t nanoseconds) const {
    return std::chrono::microseconds(
        std::llround(static_cast<double>(nanoseconds) / 1000 / m_speed));
  }

  const Timeline& m_timeline;
  const double m_speed;
};

ReplayPlugin::Library LibraryOf(const Timeline& timeline, std::size_t plugin) {
  using Library = ReplayPlugin::Library;
  if (timeline.start.spans[plugin].result != Result::kNotLoaded) return Library::kStub;
  return timeline.plugins[plugin].librarySize < 0 ? Library::kMissing : Library::kUnusable;
}

std::vector<std::size_t> WithoutRepeats(std::vector<std::size_t> numbers) {
  std::vector<std::size_t> once;
  for (const std::size_t number : numbers) {
    if (std::find(once.begin(), once.end(), number) == once.end()) once.push_back(number);
  }
  return once;
}

std::vector<ReplayPlugin> MakePlugins(const Timeline& timeline, const ReplayOptions& options) {
  std::vector<std::string> ids;
  for (const PluginHead& head : timeline.plugins) ids.push_back(head.id);
  const std::vector<std::string> names = ReplayNames(ids, options.anonymous);
  const BehaviorMaker maker(timeline, options.speed);
  std::vector<ReplayPlugin> plugins;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const PluginHead& head = timeline.plugins[i];
    ReplayPlugin plugin;
    plugin.recordedID = head.id;
    plugin.id = names[i];
    plugin.version = options.anonymous ? "1.0.0" : head.version;
    plugin.dependsOn = WithoutRepeats(timeline.start.waitsFor[i]);
    plugin.isPlatform = head.kind == "platform" && plugin.dependsOn.empty();
    plugin.hasID = !plugin.isPlatform || !head.id.empty();
    plugin.library = LibraryOf(timeline, i);
    plugin.behavior = {maker.Init(i), maker.UnInit(i)};
    plugins.push_back(std::move(plugin));
  }
  return plugins;
}

/// Collects the sentences on what the replay does differently.
class Differences {
 public:
  Differences(const Timeline& timeline, const Replay& replay, const ReplayOptions& options)
      : m_timeline(timeline), m_replay(replay), m_options(options) {}

  std::vector<std::string> Collect() {
    AddNames();
    AddLeftOut();
    AddKinds();
    AddNotBegun();
    AddHangs();
    AddNotKnown();
    AddCrash();
    if (m_options.speed != 1) {
      std::string factor = std::to_string(m_options.speed);
      factor.erase(factor.find_last_not_of('0') + 1);
      if (factor.back() == '.') factor.pop_back();
      m_sentences.push_back("Durations are divided by " + factor + ".");
    }
    return std::move(m_sentences);
  }

 private:
  template <typename Holds>
  std::vector<std::string> PluginsThat(Holds holds) const {
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < m_replay.plugins.size(); ++i) {
      if (holds(i)) ids.push_back(m_replay.plugins[i].id);
    }
    return ids;
  }

  void Add(const std::string& sentence, const std::vector<std::string>& ids) {
    if (!ids.empty()) m_sentences.push_back(sentence + ": " + JoinNames(ids, kMostNames) + ".");
  }

  void AddNames() {
    if (m_options.anonymous) {
      m_sentences.emplace_back("Names and versions of product and plugins are replaced.");
      return;
    }
    for (const ReplayPlugin& plugin : m_replay.plugins) {
      if (plugin.id == plugin.recordedID || !plugin.hasID) continue;
      m_sentences.push_back(Quoted(plugin.recordedID) + " is named " + plugin.id +
                            ", since its own name cannot name a file on every system.");
    }
  }

  void AddLeftOut() {
    std::vector<std::string> ids;
    for (const PluginRun& plugin : m_timeline.state.Plugins()) {
      if (plugin.head.kind == "driver" || plugin.head.kind == "executable") {
        ids.push_back(plugin.head.id);
      }
    }
    if (ids.empty()) return;
    const std::string which = m_options.anonymous ? "." : ": " + JoinNames(ids, kMostNames) + ".";
    const std::string what = ids.size() == 1
                                 ? "1 driver or executable is"
                                 : std::to_string(ids.size()) + " drivers and executables are";
    m_sentences.push_back(what + " left out, which the frame does not start" + which);
  }

  void AddKinds() {
    Add("Sub platforms that have dependencies in the record are server plugins here",
        PluginsThat([this](std::size_t i) {
          return m_timeline.plugins[i].kind == "platform" && !m_replay.plugins[i].isPlatform;
        }));
  }

  void AddNotBegun() {
    Add("What these would have done is not known, since they never began; here they return at once",
        PluginsThat([this](std::size_t i) { return !m_timeline.start.spans[i].HasBegun(); }));
    if (!m_timeline.stop.begun) {
      m_sentences.emplace_back("The record has no stop: here every UnInit returns at once.");
    }
  }

  void AddHangs() {
    Add("The record ends before their Init had returned; here it never returns",
        PluginsThat([this](std::size_t i) {
          return m_replay.plugins[i].behavior.init.ending == Ending::kHangs;
        }));
    Add("The record ends before their UnInit had returned; here it never returns",
        PluginsThat([this](std::size_t i) {
          return m_replay.plugins[i].behavior.uninit.ending == Ending::kHangs;
        }));
  }

  void AddNotKnown() {
    Add("The log does not say how their Init ended; here it succeeds",
        PluginsThat([this](std::size_t i) {
          return m_timeline.start.spans[i].result == Result::kNotKnown;
        }));
    Add("The log does not say how their UnInit ended; here it succeeds",
        PluginsThat([this](std::size_t i) {
          return m_timeline.stop.spans[i].result == Result::kNotKnown;
        }));
  }

  void AddCrash() {
    const std::optional<RunEvent>& crash = m_timeline.state.Crash();
    if (!crash) return;
    const bool isReplayed =
        !crash->phase.empty() && m_replay.Find(crash->plugin) < m_replay.plugins.size();
    if (isReplayed) return;
    m_sentences.emplace_back(
        "The recorded run ended by a crash in no plugin's Init or UnInit, which is not replayed.");
  }

  const Timeline& m_timeline;
  const Replay& m_replay;
  const ReplayOptions& m_options;
  std::vector<std::string> m_sentences;
};

bool EndsTheRun(Ending ending) {
  return ending == Ending::kHangs || ending == Ending::kAborts || ending == Ending::kSegfaults ||
         ending == Ending::kExits;
}

}  // namespace

std::size_t Replay::Find(const std::string& id) const {
  for (const auto member : {&ReplayPlugin::recordedID, &ReplayPlugin::id}) {
    for (std::size_t i = 0; i < plugins.size(); ++i) {
      if (plugins[i].*member == id) return i;
    }
  }
  return plugins.size();
}

Replay MakeReplay(const Timeline& timeline, const ReplayOptions& options) {
  Replay replay;
  const RunHead& head = timeline.run.record.head;
  const bool isNamed = !options.anonymous && !head.product.empty();
  replay.product = isNamed ? head.product : "PRODUCT";
  replay.version = isNamed ? head.productVersion : "1.0.0";
  replay.busy = options.busy;
  replay.plugins = MakePlugins(timeline, options);
  replay.differences = Differences(timeline, replay, options).Collect();
  return replay;
}

Fault ParseFault(const std::string& text) {
  if (text == "fail") return {Fault::Kind::kFail, 0};
  if (text == "hang") return {Fault::Kind::kHang, 0};
  if (text == "crash") return {Fault::Kind::kCrash, 0};
  const std::string slow = "slow:";
  if (text.compare(0, slow.size(), slow) == 0) {
    constexpr std::int64_t longest = 86'400'000;  // a day
    Fault fault{Fault::Kind::kSlow, 0};
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data() + slow.size(), end, fault.milliseconds);
    const bool isNumber = read.ec == std::errc() && read.ptr == end;
    if (isNumber && fault.milliseconds >= 0 && fault.milliseconds <= longest) return fault;
    throw std::invalid_argument(Quoted(text) +
                                " needs whole milliseconds, at most a day: slow:500");
  }
  throw std::invalid_argument(Quoted(text) +
                              " is no fault; there are fail, hang, crash and slow:MILLISECONDS");
}

void AddFault(ReplayPlugin& plugin, const Fault& fault) {
  EntryBehavior& init = plugin.behavior.init;
  plugin.library = ReplayPlugin::Library::kStub;
  switch (fault.kind) {
    case Fault::Kind::kFail:
      init.ending = Ending::kFails;
      return;
    case Fault::Kind::kHang:
      init.ending = Ending::kHangs;
      return;
    case Fault::Kind::kCrash:
      init.ending = Ending::kSegfaults;
      return;
    case Fault::Kind::kSlow:
      init.duration += std::chrono::milliseconds(fault.milliseconds);
      return;
  }
}

std::vector<std::string> MendHangsAndCrashes(Replay& replay) {
  std::vector<std::string> sentences;
  for (ReplayPlugin& plugin : replay.plugins) {
    for (EntryBehavior* entry : {&plugin.behavior.init, &plugin.behavior.uninit}) {
      if (!EndsTheRun(entry->ending)) continue;
      entry->ending = Ending::kSucceeds;
      const bool isInit = entry == &plugin.behavior.init;
      sentences.push_back(plugin.id + " hung or crashed in its " + (isInit ? "Init" : "UnInit") +
                          " in the recorded run; here it succeeds");
    }
  }
  return sentences;
}
