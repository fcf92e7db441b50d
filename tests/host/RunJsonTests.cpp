#include "host/RunJson.h"

#include <gtest/gtest.h>

#include <chrono>

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

/// Which members of the object come from each field of a struct; "" for one that it does not show.
struct Source {
  const char* record;
  std::size_t fields;
  std::vector<std::pair<const char*, const char*>> members;
};

TEST(RunJson, ShowsOrLeavesOutEachFieldOnPurpose) {
  const std::vector<Source> sources = {
      {"RunFacts",
       FieldCount<RunFacts>(),
       {{"initResult", "Frame_Init"},
        {"startResult", "Frame_Start"},
        {"callbackResult", ""},  // as the platform has it
        {"failure", ""},         // in the sentence, as the next three
        {"stoppedBy", ""},
        {"unfinishedTasks", ""},
        {"pendingCall", ""}}},
      {"Verdict",
       FieldCount<Verdict>(),
       {{"status", "status"}, {"exitStatus", "exitStatus"}, {"sentence", "sentence"}}},
      {"PlatformRecord",
       FieldCount<PlatformRecord>(),
       {{"productModel", ""},  // of HUB model, as the next three
        {"addons", ""},
        {"tools", ""},
        {"plugins", ""},
        {"loadState", "LoadState"},
        {"handles", "Handles"},
        {"timing", "Timing"},
        {"callbackResult", "CallbackResult"}}},
      {"TimingLine", FieldCount<TimingLine>(), {{"text", "text"}, {"milliseconds", "ms"}}},
      {"LpcRecord",
       FieldCount<LpcRecord>(),
       {{"up", ""}, {"name", ""}, {"info", ""}, {"notified", "Notified"}}},
      {"RunTotals",
       FieldCount<RunTotals>(),
       {{"plugins", "plugins"},
        {"started", "started"},
        {"initFailed", "initFailed"},
        {"notLoaded", "notLoaded"},
        {"stopped", "stopped"},
        {"stopRefused", "stopRefused"}}},
      {"RunState::Phase",
       FieldCount<RunState::Phase>(),
       {{"name", "name"}, {"beginNs", "startedAt"}, {"endNs", "ms"}, {"milliseconds", ""}}},
      {"PluginHead",
       FieldCount<PluginHead>(),
       {{"id", "id"},
        {"kind", "kind"},
        {"version", "version"},
        {"library", ""},
        {"librarySize", ""},
        {"dependsOn", "dependsOn"}}},
      {"PluginRun",
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
  const std::string object = Shown(RunJson({}, kClock, {}, DegradedRun().State(), {},
                                           {{}, {}, {}, {}, {}, {}, {{"text", 1}}, {}}, {}, ""));
  for (const Source& source : sources) {
    EXPECT_EQ(source.members.size(), source.fields)
        << source.record << " has another number of fields: shall the object show them?";
    for (const auto& [field, member] : source.members) {
      if (*member == '\0') continue;
      EXPECT_NE(std::string::npos, object.find("\"" + std::string(member) + "\": "))
          << source.record << "::" << field;
    }
  }
}

}  // namespace
