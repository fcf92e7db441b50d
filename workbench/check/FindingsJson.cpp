#include "workbench/check/FindingsJson.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "workbench/output/Text.h"

namespace {

using Json = nlohmann::ordered_json;

void AddText(Json& json, const char* name, const std::string& text) {
  if (!text.empty()) json[name] = text;
}

void AddPlace(Json& json, const CheckReport& report, const Place& place) {
  const std::optional<FilePath> elsewhere = Elsewhere(report, place.file);
  AddText(json, "file", elsewhere ? elsewhere->absolute : place.file);
  if (place.line > 0) json["line"] = place.line;
  if (place.line > 0 && place.column > 0) json["column"] = place.column;
}

Json Product(const CheckReport& report) {
  Json json;
  AddText(json, "name", report.productName);
  AddText(json, "version", report.productVersion);
  json["folder"] = report.folder;
  return json;
}

Json Finding(const CheckReport& report, const RuleFinding& finding) {
  Json json;
  json["rule"] = finding.rule;
  json["severity"] = Word(finding.severity);
  AddPlace(json, report, finding.place);
  json["message"] = Escaped(finding.message);
  AddText(json, "plugin", finding.plugin);
  AddText(json, "subject", finding.subject);
  for (const RelatedPlace& related : finding.related) {
    Json place = Json::object();
    AddPlace(place, report, related.place);
    place["message"] = Escaped(related.message);
    json["related"].push_back(std::move(place));
  }
  if (!finding.choices.empty()) json["choices"] = finding.choices;
  return json;
}

Json Findings(const CheckReport& report) {
  Json findings = Json::array();
  const std::vector<std::string> fingerprints = Fingerprints(report.findings);
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    Json json = Finding(report, report.findings[i]);
    json["fingerprint"] = fingerprints[i];
    if (report.baseline) json["baseline"] = IsAccepted(report, i) ? "unchanged" : "new";
    findings.push_back(std::move(json));
  }
  return findings;
}

Json Absent(const Baseline& baseline) {
  Json absent = Json::array();
  for (const auto& [key, count] : baseline) {
    Json json;
    json["rule"] = key.rule;
    AddText(json, "plugin", key.plugin);
    AddText(json, "subject", key.subject);
    json["count"] = count;
    absent.push_back(std::move(json));
  }
  return absent;
}

const char* Word(FrameAnswer answer) {
  switch (answer) {
    case FrameAnswer::kRead:
      return "read";
    case FrameAnswer::kRefused:
      return "refused";
    case FrameAnswer::kNotAsked:
      return "not asked";
  }
  return "";
}

Json Change(const PartChange& change, const char* member) {
  Json json = {{member, change.id}, {"kind", change.kind}};
  AddText(json, "before", change.before);
  AddText(json, "after", change.after);
  if (change.isLower) json["lower"] = true;
  AddText(json, "otherKind", change.otherKind);
  if (change.otherFile) json["otherFile"] = true;
  return json;
}

Json Changes(const ProductChanges& changes) {
  Json json = {
      {"folder", changes.folder},
      {"before", changes.productBefore},
      {"after", changes.productAfter},
      {"frame", {{"before", Word(changes.frameBefore)}, {"after", Word(changes.frameAfter)}}},
      {"addons", Json::array()},
      {"plugins", Json::array()},
      {"order", Json::array()}};
  for (const PartChange& change : changes.addons) {
    json["addons"].push_back(Change(change, "addon"));
  }
  for (const PartChange& change : changes.plugins) {
    json["plugins"].push_back(Change(change, "plugin"));
  }
  for (const OrderChange& change : changes.order) {
    json["order"].push_back(
        {{"plugin", change.plugin}, {"other", change.other}, {"waits", change.isNew}});
  }
  return json;
}

Json Counts(const CheckReport& report) {
  const FindingCounts counts = CountFindings(report);
  Json json = {{"errors", counts.errors}, {"warnings", counts.warnings}, {"notes", counts.notes}};
  if (report.baseline) {
    json["accepted"] = counts.accepted;
    json["absent"] = counts.absent;
  }
  return json;
}

}  // namespace

std::string FindingsJson(const CheckReport& report) {
  Json json;
  json["schema"] = 1;
  json["tool"] = {{"name", "HUB check"}, {"version", report.toolVersion}};
  json["product"] = Product(report);
  json["findings"] = Findings(report);
  if (report.baseline) json["absent"] = Absent(report.baseline->absent);
  if (report.changes) json["changes"] = Changes(*report.changes);
  json["counts"] = Counts(report);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
