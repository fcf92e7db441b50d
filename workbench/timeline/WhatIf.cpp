#include "workbench/timeline/WhatIf.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <deque>
#include <utility>

#include "workbench/output/Nearest.h"
#include "workbench/output/Text.h"

namespace {

using Kind = WhatIfChange::Kind;

constexpr double kNanosecondsPerMillisecond = 1e6;
constexpr double kMostMilliseconds = 1e9;      // of work; some eleven days
constexpr double kMostPollMilliseconds = 1e6;  // of one sleep
constexpr double kMostWorkers = 1e6;
constexpr double kMostPercent = 10'000;
constexpr const char* kArrows[] = {"\u2192", "->"};

std::string Quoted(const std::string& text) {
  return "\"" + Escaped(text) + "\"";
}

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return std::string();
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// Text that is a number from 0 to `most`.
std::optional<double> NumberOf(const std::string& text, double most) {
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  if (error != std::errc() || rest != end || !(number >= 0) || number > most) return std::nullopt;
  return number;
}

/// Reads changes one after the other. The first error is kept.
class Reader {
 public:
  explicit Reader(const Timeline& timeline)
      : m_timeline(timeline), m_dependsOn(timeline.start.waitsFor) {}

  ParsedWhatIf Read(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      WhatIfChange change;
      change.text = Trimmed(text);
      if (!Read(change)) return {{}, Quoted(text) + ": " + m_error};
      m_parsed.changes.push_back(std::move(change));
    }
    return std::move(m_parsed);
  }

 private:
  bool Fail(const std::string& error) {
    m_error = error;
    return false;
  }

  bool Read(WhatIfChange& change) {
    const std::string& text = change.text;
    for (const auto& [word, kind] :
         {std::pair("cut ", Kind::kCut), std::pair("add ", Kind::kAdd)}) {
      if (text.rfind(word, 0) != 0) continue;
      change.kind = kind;
      return ReadEdge(Trimmed(text.substr(4)), change);
    }
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos) {
      return Fail(
          "it is none of \"workers=4\", \"poll=0\", \"PLUGIN=120\", \"PLUGIN=50%\", "
          "\"cut A->B\" and \"add A->B\"");
    }
    return ReadValue(Trimmed(text.substr(0, equals)), Trimmed(text.substr(equals + 1)), change);
  }

  bool ReadValue(const std::string& name, const std::string& value, WhatIfChange& change) {
    if (name == "workers") {
      change.kind = Kind::kWorkers;
      const std::optional<double> number = NumberOf(value, kMostWorkers);
      if (!number || *number < 1 || *number != std::floor(*number)) {
        return Fail("the number of threads is a whole number from 1 to 1000000");
      }
      change.number = *number;
      return true;
    }
    if (name == "poll") {
      change.kind = Kind::kPoll;
      const std::optional<double> number = NumberOf(value, kMostPollMilliseconds);
      if (!number || (*number > 0 && *number < 1)) {
        return Fail(
            "the milliseconds between two looks are a number from 1 to 1000000, or 0 for "
            "no waiting");
      }
      change.number = *number;
      return true;
    }
    if (!Find(name, change.plugin)) return false;
    const bool isShare = !value.empty() && value.back() == '%';
    change.kind = isShare ? Kind::kShare : Kind::kWork;
    const std::optional<double> number =
        isShare ? NumberOf(value.substr(0, value.size() - 1), kMostPercent)
                : NumberOf(value, kMostMilliseconds);
    if (!number) {
      return Fail(
          "the work of a plugin is a number of milliseconds from 0 to 1000000000, or of "
          "percent from 0 to 10000");
    }
    change.number = *number;
    return true;
  }

  bool Find(const std::string& id, std::size_t& plugin) {
    const auto& plugins = m_timeline.plugins;
    const auto found = std::find_if(plugins.begin(), plugins.end(),
                                    [&](const PluginHead& head) { return head.id == id; });
    plugin = static_cast<std::size_t>(found - plugins.begin());
    if (found != plugins.end()) return true;
    std::vector<std::string> ids;
    ids.reserve(plugins.size());
    for (const PluginHead& head : plugins) ids.push_back(head.id);
    return Fail("the run has no plugin " + Quoted(id) + DidYouMean(id, ids));
  }

  bool ReadEdge(const std::string& text, WhatIfChange& change) {
    for (const std::string arrow : kArrows) {
      const std::size_t at = text.find(arrow);
      if (at == std::string::npos) continue;
      if (!Find(Trimmed(text.substr(0, at)), change.plugin)) return false;
      if (!Find(Trimmed(text.substr(at + arrow.size())), change.other)) return false;
      return change.kind == Kind::kCut ? Cut(change) : Add(change);
    }
    return Fail("an edge is written A->B: A depends on B");
  }

  const std::string& ID(std::size_t plugin) const { return m_timeline.plugins[plugin].id; }

  bool DependsOn(std::size_t plugin, std::size_t other) const {
    const auto& others = m_dependsOn[plugin];
    return std::find(others.begin(), others.end(), other) != others.end();
  }

  bool Cut(const WhatIfChange& change) {
    const auto [plugin, other] = std::pair(change.plugin, change.other);
    if (!DependsOn(plugin, other)) {
      std::string error = Quoted(ID(plugin)) + " does not depend on " + Quoted(ID(other));
      if (DependsOn(other, plugin)) error += "; it is the other way round";
      return Fail(error);
    }
    auto& others = m_dependsOn[plugin];
    others.erase(std::remove(others.begin(), others.end(), other), others.end());
    return true;
  }

  bool Add(const WhatIfChange& change) {
    const auto [plugin, other] = std::pair(change.plugin, change.other);
    if (DependsOn(plugin, other)) {
      return Fail(Quoted(ID(plugin)) + " depends on " + Quoted(ID(other)) + " already");
    }
    const std::string cycle = Path(other, plugin);
    if (!cycle.empty()) return Fail("that makes a cycle: " + Escaped(ID(plugin)) + cycle);
    m_dependsOn[plugin].push_back(other);
    return true;
  }

  /// " -> from -> ... -> to" along dependencies, the shortest one; empty when there is none.
  std::string Path(std::size_t from, std::size_t to) const {
    std::vector<std::optional<std::size_t>> cameFrom(m_dependsOn.size());
    std::deque<std::size_t> next = {to == from ? to : from};
    cameFrom[from] = from;
    while (!next.empty() && !cameFrom[to]) {
      const std::size_t plugin = next.front();
      next.pop_front();
      for (const std::size_t other : m_dependsOn[plugin]) {
        if (cameFrom[other]) continue;
        cameFrom[other] = plugin;
        next.push_back(other);
      }
    }
    if (!cameFrom[to]) return std::string();
    std::string text;
    for (std::size_t plugin = to;; plugin = *cameFrom[plugin]) {
      text.insert(0, " -> " + Escaped(ID(plugin)));
      if (plugin == from) return text;
    }
  }

  const Timeline& m_timeline;
  std::vector<std::vector<std::size_t>> m_dependsOn;  // after the changes so far
  ParsedWhatIf m_parsed;
  std::string m_error;
};

std::int64_t Nanoseconds(double milliseconds) {
  return std::llround(milliseconds * kNanosecondsPerMillisecond);
}

/// Sleeps of another length are as late as the recorded ones were on average.
void ChangePoll(double milliseconds, FrameLooks& looks) {
  const std::int64_t late = std::max<std::int64_t>(looks.sleep - kFrameSleep, 0);
  looks.always = milliseconds == 0;
  if (!looks.always) looks.mode = FrameLooks::Mode::kSleep;
  looks.sleep = Nanoseconds(milliseconds) + late;
  if (looks.always) looks.sleep = kFrameSleep + late;
  looks.sleeps.clear();
}

void ChangeWork(const WhatIfChange& change, PluginWork& plugin) {
  const double most = kMostMilliseconds * kNanosecondsPerMillisecond;
  const double share = static_cast<double>(plugin.work) * change.number / 100;
  plugin.work =
      change.kind == Kind::kWork ? Nanoseconds(change.number) : std::llround(std::min(share, most));
}

}  // namespace

ParsedWhatIf ParseWhatIf(const std::vector<std::string>& texts, const Timeline& timeline) {
  return Reader(timeline).Read(texts);
}

void Apply(const std::vector<WhatIfChange>& changes, bool isStop, RecordedWork& recorded) {
  PhaseWork& work = recorded.work;
  for (const WhatIfChange& change : changes) {
    const std::size_t waiter = isStop ? change.other : change.plugin;
    const std::size_t other = isStop ? change.plugin : change.other;
    auto& waitsFor = work.plugins[waiter].waitsFor;
    switch (change.kind) {
      case Kind::kWorkers:
        work.threads = static_cast<std::size_t>(change.number);
        break;
      case Kind::kPoll:
        ChangePoll(change.number, work.looks);
        break;
      case Kind::kWork:
      case Kind::kShare:
        if (!isStop) ChangeWork(change, work.plugins[change.plugin]);
        break;
      case Kind::kCut:
        waitsFor.erase(std::remove(waitsFor.begin(), waitsFor.end(), other), waitsFor.end());
        break;
      case Kind::kAdd:
        waitsFor.push_back(other);
        break;
    }
  }
}
