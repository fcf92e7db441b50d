#include "host/RunJson.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/FieldNames.h"
#include "tests/host/RunBuilder.h"
#include "tests/support/FieldCount.h"

namespace {

/// The steady clock's zero is 2001-09-09T01:46:40Z.
const RunClock kClock = {std::chrono::system_clock::from_time_t(1'000'000'000), 0};

/// As text, so that the order of members is compared too.
std::string Shown(const nlohmann::ordered_json& json) {
  return json.dump(2);
}

std::string Parsed(const char* text) {
  return Shown(nlohmann::ordered_json::parse(text));
}

RunBuilder DegradedRun() {
  PluginHead second;
  second.id = "b";
  second.kind = "platform";
  second.version = "1.2";
  second.dependsOn = {"a"};
  RunBuilder run;
  run.Plugin("a").Plugin(second).Plugin("d", "driver");
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameInit);
  run.Phase(RunEvent::Kind::kPhaseEnd, RunPhase::kFrameInit);
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStart);
  run.Started("a", 12).Ready("b", "a").InitFailed("b", "its Init returned false");
  run.Phase(RunEvent::Kind::kPhaseEnd, RunPhase::kStart).Up();
  run.Finding(Severity::kNote, "worth knowing");
  run.Finding(Severity::kWarning, "something is lost");
  run.Finding(Severity::kError, "a plugin is lost");
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kStop);
  run.StopRefused("b", "its UnInit returned false").Stopped("a", 3);
  return run;
}

TEST(RunJson, HasAllThatIsKnownOfARun) {
  RunHead head;
  head.product = "NVX";
  head.productVersion = "2.6.0";
  head.path = "/srv/site/bin/";
  RunFacts facts;
  facts.initResult = 0;
  facts.startResult = 0;
  PlatformRecord platform;
  platform.callbackResult = true;
  platform.loadState = {{"a", true}};
  platform.handles = {"a", "b"};
  platform.timing = {{"[a] Init OK", 12}, {"Plugins need to init", -1}};
  LpcRecord lpc;
  lpc.notified = {"", "again"};
  const Verdict verdict = {"degraded", kDegraded, "degraded: said in words"};
  EXPECT_EQ(Parsed(R"({
    "schema": 2,
    "product": {"name": "NVX", "version": "2.6.0", "path": "/srv/site/bin/"},
    "status": "degraded",
    "sentence": "degraded: said in words",
    "exitStatus": 3,
    "totals": {"plugins": 2, "started": 1, "initFailed": 1, "notLoaded": 0, "stopped": 1,
               "stopRefused": 1},
    "Frame_Init": 0,
    "Frame_Start": 0,
    "CallbackResult": true,
    "LoadState": {"a": true},
    "Handles": ["a", "b"],
    "Timing": [{"text": "[a] Init OK", "ms": 12}, {"text": "Plugins need to init", "ms": -1}],
    "Notified": ["", "again"],
    "phases": [
      {"name": "frame-init", "startedAt": "2001-09-09T01:46:40.001Z", "ms": 1},
      {"name": "start", "startedAt": "2001-09-09T01:46:40.003Z", "ms": 10},
      {"name": "stop", "startedAt": "2001-09-09T01:46:40.018Z", "ms": null}],
    "plugins": [
      {"id": "a", "kind": "server", "version": "", "dependsOn": [], "waitedFor": null,
       "state": "stopped", "reason": null, "initMs": 12, "uninitMs": 3,
       "startedAt": "2001-09-09T01:46:40.004Z", "thread": 7},
      {"id": "b", "kind": "platform", "version": "1.2", "dependsOn": ["a"], "waitedFor": "a",
       "state": "init-failed",
       "reason": "its Init returned false; stop: its UnInit returned false",
       "initMs": 7, "uninitMs": 4, "startedAt": "2001-09-09T01:46:40.009Z", "thread": 7},
      {"id": "d", "kind": "driver", "version": "", "dependsOn": [], "waitedFor": null,
       "state": null, "reason": null, "initMs": null, "uninitMs": null, "startedAt": null,
       "thread": null}],
    "findings": [
      {"severity": "note", "text": "worth knowing"},
      {"severity": "warning", "text": "something is lost"},
      {"severity": "error", "text": "a plugin is lost"}],
    "record": "/var/run.jsonl"})"),
            Shown(RunJson(head, kClock, facts, DegradedRun().State(), verdict, platform, lpc,
                          "/var/run.jsonl")));
}

TEST(RunJson, HasNullForWhatIsNotKnown) {
  RunHead head;
  head.path = "/nowhere/";
  RunBuilder run;
  run.Phase(RunEvent::Kind::kPhaseBegin, RunPhase::kFrameInit);
  const Verdict verdict = {"left-behind", kCutShort, "left behind: said in words"};
  EXPECT_EQ(Parsed(R"({
    "schema": 2,
    "product": {"name": null, "version": null, "path": "/nowhere/"},
    "status": "left-behind",
    "sentence": "left behind: said in words",
    "exitStatus": 4,
    "totals": {"plugins": 0, "started": 0, "initFailed": 0, "notLoaded": 0, "stopped": 0,
               "stopRefused": 0},
    "Frame_Init": null,
    "Frame_Start": null,
    "CallbackResult": null,
    "LoadState": null,
    "Handles": [],
    "Timing": [],
    "Notified": [],
    "phases": [{"name": "frame-init", "startedAt": "2001-09-09T01:46:40.001Z", "ms": null}],
    "plugins": [],
    "findings": [],
    "record": null})"),
            Shown(RunJson(head, kClock, {}, run.State(), verdict, {}, {}, "")));
}

constexpr char kVerdict[] = "host/RunVerdict.h";
constexpr char kPlatform[] = "reference/kpx/PlatformRecord.h";
constexpr char kLpc[] = "reference/lpc/LpcRecord.h";
constexpr char kEvent[] = "workbench/record/RunEvent.h";
constexpr char kState[] = "workbench/record/RunState.h";

/// Which members of the object come from each field of a struct; "" for one that it does not show.
struct Source {
  const char* header;
  const char* record;
  std::size_t fields;
  std::vector<std::pair<const char*, const char*>> members;
};

const std::vector<Source>& Sources() {
  static const std::vector<Source> sources = {
      {kEvent,
       "RunHead",
       FieldCount<RunHead>(),
       {{"run", ""},  // this and the next nine are in the record
        {"time", ""},
        {"zone", ""},
        {"nanoseconds", ""},
        {"pid", ""},
        {"host", ""},
        {"hubVersion", ""},
        {"frameVersion", ""},
        {"platformVersion", ""},
        {"commandLine", ""},
        {"product", "name"},
        {"productVersion", "version"},
        {"path", "path"},
        {"cores", ""},  // in the record, as the next one
        {"sleep", ""}}},
      {kVerdict,
       "RunFacts",
       FieldCount<RunFacts>(),
       {{"initResult", "Frame_Init"},
        {"startResult", "Frame_Start"},
        {"callbackResult", ""},  // as the platform has it
        {"failure", ""},         // in the sentence, as the next three
        {"stoppedBy", ""},
        {"unfinishedTasks", ""},
        {"pendingCall", ""}}},
      {kVerdict,
       "Verdict",
       FieldCount<Verdict>(),
       {{"status", "status"}, {"exitStatus", "exitStatus"}, {"sentence", "sentence"}}},
      {kPlatform,
       "PlatformRecord",
       FieldCount<PlatformRecord>(),
       {{"productModel", ""},  // of HUB model, as the next three
        {"addons", ""},
        {"tools", ""},
        {"plugins", ""},
        {"loadState", "LoadState"},
        {"handles", "Handles"},
        {"timing", "Timing"},
        {"callbackResult", "CallbackResult"}}},
      {kPlatform,
       "TimingLine",
       FieldCount<TimingLine>(),
       {{"text", "text"}, {"milliseconds", "ms"}}},
      {kLpc,
       "LpcRecord",
       FieldCount<LpcRecord>(),
       {{"up", ""}, {"name", ""}, {"info", ""}, {"notified", "Notified"}}},
      {kEvent,
       "RunTotals",
       FieldCount<RunTotals>(),
       {{"plugins", "plugins"},
        {"started", "started"},
        {"initFailed", "initFailed"},
        {"notLoaded", "notLoaded"},
        {"stopped", "stopped"},
        {"stopRefused", "stopRefused"}}},
      {kState,
       "Phase",
       FieldCount<RunState::Phase>(),
       {{"name", "name"}, {"beginNs", "startedAt"}, {"endNs", "ms"}, {"milliseconds", ""}}},
      {kEvent,
       "PluginHead",
       FieldCount<PluginHead>(),
       {{"id", "id"},
        {"kind", "kind"},
        {"version", "version"},
        {"library", ""},
        {"librarySize", ""},
        {"dependsOn", "dependsOn"}}},
      {kState,
       "PluginRun",
       FieldCount<PluginRun>(),
       {{"head", "id"},
        {"state", "state"},
        {"started", "state"},
        {"startCounted", ""},
        {"stopCounted", ""},
        {"initMs", "initMs"},
        {"uninitMs", "uninitMs"},
        {"sinceNs", ""},
        {"startedAtNs", "startedAt"},
        {"thread", "thread"},
        {"waitedFor", "waitedFor"},
        {"reason", "reason"},
        {"stopReason", "reason"}}}};
  return sources;
}

/// The names of all members, of inner objects too.
void AddNames(const nlohmann::ordered_json& json, std::set<std::string>& names) {
  for (const auto& [name, inner] : json.items()) {
    if (json.is_object()) names.insert(name);
    if (inner.is_structured()) AddNames(inner, names);
  }
}

TEST(RunJson, ShowsOrLeavesOutEachFieldOnPurpose) {
  for (const Source& source : Sources()) {
    const std::vector<std::string> fields = FieldNames(source.header, source.record);
    EXPECT_EQ(source.fields, fields.size())
        << source.record << ": declare each field on a line of its own";
    std::vector<std::string> known;
    for (const auto& [field, member] : source.members) known.emplace_back(field);
    EXPECT_EQ("", Difference(fields, known))
        << source.record << ": shall the object show them? Say it in the table";
  }
}

TEST(RunJson, HasTheMembersThatTheFieldsAreShownAs) {
  // Those of no field, and those of a finding.
  std::set<std::string> known = {"schema",  "product",  "totals",   "phases",
                                 "plugins", "findings", "severity", "record"};
  for (const Source& source : Sources()) {
    for (const auto& [field, member] : source.members) {
      if (*member != '\0') known.insert(member);
    }
  }
  std::set<std::string> shown;
  AddNames(RunJson({}, kClock, {}, DegradedRun().State(), {},
                   {{}, {}, {}, {}, {}, {}, {{"text", 1}}, {}}, {}, ""),
           shown);
  EXPECT_EQ("", Difference(known, shown));
}

}  // namespace
