#include "workbench/shake/ShakeReport.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "workbench/output/Text.h"
#include "workbench/shake/ShakePlan.h"

namespace {

using Json = nlohmann::ordered_json;
using Kind = StartOutcome::Kind;

constexpr std::size_t kMostNames = 5;

const char* Verb(Kind kind) {
  switch (kind) {
    case Kind::kFailed:
      return "fails";
    case Kind::kNotLoaded:
      return "is not loaded";
    case Kind::kCrashed:
      return "crashes";
    case Kind::kHung:
      return "does not return from Init";
    default:
      return "starts";
  }
}

const char* Word(Kind kind) {
  switch (kind) {
    case Kind::kFailed:
      return "failed";
    case Kind::kNotLoaded:
      return "not-loaded";
    case Kind::kCrashed:
      return "crashed";
    case Kind::kHung:
      return "hung";
    default:
      return "ok";
  }
}

std::string Because(const std::string& reason) {
  return reason.empty() ? reason : ": \"" + Escaped(reason) + "\"";
}

std::string RunsText(std::size_t number, std::size_t of) {
  return fmt::format("{} of {}", number, Count(of, "run"));
}

/// The command that shows a failure again; empty options are the product's own order.
std::string Again(const ShakeReport& report, const std::string& options) {
  std::string command = "HUB run";
  if (!report.bin.empty()) command += " " + CommandText({"--bin", report.bin});
  return command + (options.empty() ? "" : " " + options);
}

std::string MissingText(const ShakeReport& report, const MissingDependency& missing) {
  const OrderEvidence& evidence = missing.evidence;
  const bool isOne = missing.others.size() == 1;
  const std::string others = JoinNames(missing.others, kMostNames);
  std::string text =
      fmt::format("error: {} {} when it starts before {} is up ({}; well in {} after it){}\n",
                  ShownID(missing.plugin), Verb(missing.kind), isOne ? others : "one of " + others,
                  RunsText(evidence.failedBefore, evidence.before),
                  RunsText(evidence.wellAfter, evidence.after), Because(missing.reason));
  if (!isOne) text += "    the runs do not say which of them; more runs (--runs) may\n";
  const auto place = report.places.find(missing.plugin);
  if (place != report.places.end()) {
    text += fmt::format("    declare the dependency: {}:{}\n",
                        Escaped(report.shownFolder + place->second.file), place->second.line);
  }
  return text + "    see it again: " + Again(report, missing.options) + "\n";
}

std::string UnexplainedText(const ShakeReport& report, const PluginNote& note) {
  return fmt::format(
      "warning: {} {} in {}, and no order of two starts explains it{}\n    it did so in: {}\n",
      ShownID(note.plugin), Verb(note.kind), RunsText(note.times, note.runs), Because(note.reason),
      Again(report, note.options));
}

std::string ConsequenceText(const PluginNote& note) {
  return fmt::format("note: {} {} in {}, in each of which {}, on which it depends, is not up{}\n",
                     ShownID(note.plugin), Verb(note.kind), RunsText(note.times, note.runs),
                     ShownID(note.because), Because(note.reason));
}

std::string AlwaysText(const PluginNote& note) {
  return fmt::format("note: {} {} in every run{}\n", ShownID(note.plugin), Verb(note.kind),
                     Because(note.reason));
}

std::string HeadText(const ShakeReport& report) {
  std::string product =
      report.productName.empty() ? "product without a name" : Escaped(report.productName);
  if (!report.productVersion.empty()) product += " " + Escaped(report.productVersion);
  return fmt::format("{} in {}: {}, {} in {:.0f} s\n", product, Escaped(report.folder),
                     Count(report.plugins, "plugin"), Count(report.runs, "run"), report.seconds);
}

/// "1 missing dependency, 2 changes without an explanation".
std::string FoundText(const ShakeReport& report) {
  const ShakeAnalysis& analysis = report.analysis;
  const std::size_t missing = analysis.missing.size();
  const std::size_t changes = analysis.unexplained.size();
  std::string text;
  if (missing != 0) {
    text = missing == 1 ? "1 missing dependency" : fmt::format("{} missing dependencies", missing);
  }
  if (changes != 0) {
    text += text.empty() ? "" : ", ";
    text += fmt::format("{} without an explanation", Count(changes, "change"));
  }
  if (!text.empty()) return text;
  return "no missing dependency found in " + Count(report.runs, "run") + " in different orders";
}

std::string EndText(const ShakeReport& report) {
  std::string text = FoundText(report);
  if (report.badRecords != 0) {
    text += fmt::format("; {} left no record that can be read", Count(report.badRecords, "run"));
  }
  if (report.runsNotMade != 0) {
    text += fmt::format("; {} of the plan {} not made ({})", Count(report.runsNotMade, "run"),
                        report.runsNotMade == 1 ? "was" : "were",
                        report.stoppedBy.empty() ? "--seconds" : report.stoppedBy);
  }
  return text + "\n";
}

void AddText(Json& json, const char* name, const std::string& text) {
  if (!text.empty()) json[name] = Escaped(text);
}

Json RunsJson(std::size_t number, std::size_t of) {
  return {{"runs", number}, {"of", of}};
}

Json MissingJson(const ShakeReport& report, const MissingDependency& missing) {
  Json json;
  json["plugin"] = missing.plugin;
  json["result"] = Word(missing.kind);
  AddText(json, "reason", missing.reason);
  json["before"] = missing.others;
  json["shown"] = missing.isShown;
  json["failsBefore"] = RunsJson(missing.evidence.failedBefore, missing.evidence.before);
  json["wellAfter"] = RunsJson(missing.evidence.wellAfter, missing.evidence.after);
  const auto place = report.places.find(missing.plugin);
  if (place != report.places.end()) {
    json["file"] = place->second.file;
    json["line"] = place->second.line;
  }
  json["again"] = Again(report, missing.options);
  return json;
}

Json NoteJson(const PluginNote& note) {
  Json json;
  json["plugin"] = note.plugin;
  json["result"] = Word(note.kind);
  AddText(json, "reason", note.reason);
  json["times"] = RunsJson(note.times, note.runs);
  if (!note.because.empty()) json["because"] = note.because;
  return json;
}

Json NotesJson(const std::vector<PluginNote>& notes) {
  Json json = Json::array();
  for (const PluginNote& note : notes) json.push_back(NoteJson(note));
  return json;
}

}  // namespace

std::string ShakeText(const ShakeReport& report) {
  std::string text = HeadText(report);
  for (const MissingDependency& missing : report.analysis.missing) {
    text += MissingText(report, missing);
  }
  for (const PluginNote& note : report.analysis.unexplained) text += UnexplainedText(report, note);
  for (const PluginNote& note : report.analysis.consequences) text += ConsequenceText(note);
  for (const PluginNote& note : report.analysis.always) text += AlwaysText(note);
  return text + EndText(report);
}

std::string ShakeJson(const ShakeReport& report) {
  Json json;
  json["schema"] = 1;
  json["tool"] = {{"name", "HUB shake"}, {"version", report.toolVersion}};
  json["product"] = Json::object();
  AddText(json["product"], "name", report.productName);
  AddText(json["product"], "version", report.productVersion);
  json["product"]["folder"] = report.folder;
  json["plugins"] = report.plugins;
  json["runs"] = {
      {"made", report.runs}, {"notMade", report.runsNotMade}, {"withoutRecord", report.badRecords}};
  AddText(json["runs"], "stoppedBy", report.stoppedBy);
  json["missing"] = Json::array();
  for (const MissingDependency& missing : report.analysis.missing) {
    json["missing"].push_back(MissingJson(report, missing));
  }
  json["unexplained"] = Json::array();
  for (const PluginNote& note : report.analysis.unexplained) {
    json["unexplained"].push_back(NoteJson(note));
    json["unexplained"].back()["again"] = Again(report, note.options);
  }
  json["consequences"] = NotesJson(report.analysis.consequences);
  json["always"] = NotesJson(report.analysis.always);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
