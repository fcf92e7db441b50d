#include "tests/support/RunText.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using Kind = RunEvent::Kind;
using Result = RunEvent::Result;

constexpr std::int64_t kNone = -1;
constexpr std::int64_t kBegin = 1'000'000'000;  // the steady clock when the run began

std::int64_t Time(const std::string& word) {
  return word == "-" ? kNone : std::llround(std::stod(word) * 1e6) + kBegin;
}

Result ResultOf(const std::string& word) {
  if (word.empty() || word == "ok") return Result::kOk;
  if (word == "failed") return Result::kFailed;
  if (word == "not-loaded") return Result::kNotLoaded;
  if (word == "refused") return Result::kRefused;
  throw std::invalid_argument("no result is named " + word);
}

class Parser {
 public:
  RecordedRun Parse(const std::string& text) {
    m_run.name = "run.jsonl";
    m_run.record.head.nanoseconds = kBegin;
    m_run.record.head.time = "2026-11-21T18:46:59.123Z";
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) AddLine(line);
    AddReady();
    auto& events = m_run.record.events;
    std::stable_sort(events.begin(), events.end(), [](const RunEvent& a, const RunEvent& b) {
      return a.nanoseconds < b.nanoseconds;
    });
    return std::move(m_run);
  }

 private:
  RunEvent& Add(Kind kind, std::int64_t at, const std::string& plugin = "") {
    RunEvent event;
    event.kind = kind;
    event.nanoseconds = at;
    event.thread = m_task;
    event.plugin = plugin;
    auto& events = at == kNone ? m_dropped : m_run.record.events;
    events.push_back(event);
    return events.back();
  }

  void AddLine(const std::string& line) {
    std::istringstream words(line);
    std::string first;
    if (!(words >> first)) return;
    if (first == RunPhase::kStart || first == RunPhase::kStop) return AddPhase(first, words);
    if (first.back() == ':') return AddPlugin(first.substr(0, first.size() - 1), words);
    AddSpan(first, words);
  }

  void AddPhase(const std::string& name, std::istringstream& words) {
    std::string begin;
    std::string end;
    words >> begin >> end;
    Add(Kind::kPhaseBegin, Time(begin)).phase = name;
    RunEvent& ended = Add(Kind::kPhaseEnd, Time(end));
    ended.phase = name;
    ended.milliseconds = (Time(end) - Time(begin)) / 1'000'000;
  }

  void AddPlugin(const std::string& id, std::istringstream& words) {
    PluginHead head;
    head.id = id;
    head.kind = "server";
    for (std::string other; words >> other;) head.dependsOn.push_back(other);
    m_run.record.plugins.push_back(head);
  }

  void AddSpan(const std::string& id, std::istringstream& words) {
    std::string phase;
    std::string posted;
    std::string begin;
    std::string from;
    std::string to;
    std::string counted;
    std::string result;
    std::string reason;
    words >> phase >> posted >> begin >> from >> to >> counted >> result >> std::ws;
    std::getline(words, reason);
    const bool starts = phase == RunPhase::kStart;
    ++m_task;
    Add(Kind::kPosted, Time(posted)).task = m_task;
    Add(Kind::kTaskBegin, Time(begin)).task = m_task;
    if (starts) {
      Add(Kind::kLoadBegin, Time(begin), id).task = m_task;
      RunEvent& loaded = Add(Kind::kLoadEnd, Time(from == "-" ? counted : from), id);
      loaded.result = ResultOf(result) == Result::kNotLoaded ? Result::kFailed : Result::kOk;
      if (loaded.result == Result::kFailed) loaded.text = reason;
    }
    Add(starts ? Kind::kInitBegin : Kind::kUnInitBegin, Time(from), id);
    RunEvent& returned = Add(starts ? Kind::kInitEnd : Kind::kUnInitEnd, Time(to), id);
    returned.result = ResultOf(result);
    returned.milliseconds = (Time(to) - Time(from)) / 1'000'000;
    returned.text = reason;
    RunEvent& done = Add(Kind::kCounted, Time(counted), id);
    done.phase = phase;
    done.result = ResultOf(result);
    Add(Kind::kTaskEnd, Time(counted)).task = m_task;
    m_counted[phase][id] = Time(counted);
  }

  void AddReady() {
    for (const std::string phase : {RunPhase::kStart, RunPhase::kStop}) {
      for (const PluginHead& plugin : m_run.record.plugins) AddReady(phase, plugin.id);
    }
  }

  void AddReady(const std::string& phase, const std::string& id) {
    std::string last;
    std::int64_t at = kNone;
    for (const std::string& other : WaitsFor(phase, id)) {
      const auto counted = m_counted[phase].find(other);
      if (counted == m_counted[phase].end() || counted->second == kNone) return;
      if (counted->second >= at) {
        at = counted->second;
        last = other;
      }
    }
    if (at == kNone) at = PhaseBegin(phase);
    RunEvent& ready = Add(Kind::kReady, at, id);
    ready.phase = phase;
    ready.text = last;
  }

  std::vector<std::string> WaitsFor(const std::string& phase, const std::string& id) const {
    std::vector<std::string> others;
    for (const PluginHead& plugin : m_run.record.plugins) {
      if (phase == RunPhase::kStart && plugin.id == id) return plugin.dependsOn;
      const auto& ids = plugin.dependsOn;
      if (phase == RunPhase::kStop && std::count(ids.begin(), ids.end(), id) != 0) {
        others.push_back(plugin.id);
      }
    }
    return others;
  }

  std::int64_t PhaseBegin(const std::string& phase) const {
    for (const RunEvent& event : m_run.record.events) {
      if (event.kind == Kind::kPhaseBegin && event.phase == phase) return event.nanoseconds;
    }
    return kNone;
  }

  RecordedRun m_run;
  std::vector<RunEvent> m_dropped;  // events without a time
  std::uint64_t m_task = 0;
  std::map<std::string, std::map<std::string, std::int64_t>> m_counted;  // by phase and plugin
};

}  // namespace

RecordedRun RunFromText(const std::string& text) {
  return Parser().Parse(text);
}
