#include "workbench/check/FindingsSarif.h"

#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "workbench/check/RuleText.h"
#include "workbench/output/Text.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr char kSchema[] =
    "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json";
constexpr char kBase[] = "PRODUCT";
constexpr char kFingerprint[] = "ruleAndSubject/v1";

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool IsLetterOrDigit(char c) {
  return IsLetter(c) || (c >= '0' && c <= '9');
}

/// A path as part of a URI; "/" stays.
std::string PercentEncoded(const std::string& path) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : path) {
    if (IsLetterOrDigit(c) || (c != '\0' && std::strchr("-._~/", c) != nullptr)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += '%';
      encoded += digits[byte >> 4U];
      encoded += digits[byte & 0xFU];
    }
  }
  return encoded;
}

/// A text as a message of SARIF, where braces are placeholders unless doubled and [text](address)
/// is a link.
std::string MessageText(const std::string& text) {
  std::string message;
  for (const char c : text) {
    if (c == '(' && !message.empty() && message.back() == ']') message += ' ';
    message += c;
    if (c == '{' || c == '}') message += c;
  }
  return message;
}

Json Message(const std::string& text) {
  return {{"text", MessageText(text)}};
}

/// A text in Markdown that shows as it is: neither HTML nor emphasis.
std::string Markdown(const std::string& text) {
  std::string markdown;
  for (const char c : text) {
    if (c != '\0' && std::strchr("\\`*_[]<>&#|~", c) != nullptr) markdown += '\\';
    markdown += c;
  }
  return markdown;
}

Json Help(const Rule& rule) {
  Json help = Message(std::string(rule.explanation) + "\n\nExample:\n" + rule.example +
                      "\n\nRemedy: " + rule.remedy);
  help["markdown"] =
      MessageText(Markdown(rule.explanation) + "\n\n**Example**\n\n" + Indented(rule.example) +
                  "\n\n**Remedy**\n\n" + Markdown(rule.remedy));
  return help;
}

/// The summary as one word: "PluginListedWithoutDescription".
std::string NameOf(const Rule& rule) {
  std::string name;
  bool begins = true;
  for (const char c : std::string(rule.summary)) {
    const bool small = c >= 'a' && c <= 'z';
    if (IsLetterOrDigit(c)) name += begins && small ? static_cast<char>(c - 'a' + 'A') : c;
    begins = !IsLetterOrDigit(c) && c != '\'';
  }
  return name;
}

Json RuleJson(const Rule& rule) {
  return {{"id", rule.id},
          {"name", NameOf(rule)},
          {"shortDescription", Message(rule.summary)},
          {"fullDescription", Message(rule.explanation)},
          {"help", Help(rule)},
          {"defaultConfiguration", {{"level", Word(rule.severity)}}}};
}

/// The URI of an absolute path with "/" between names; "C:/site" and "//server/share/site" too.
std::string FileUri(const std::string& path) {
  const bool onServer = path.compare(0, 2, "//") == 0;
  const bool onDrive = path.size() >= 2 && IsLetter(path[0]) && path[1] == ':';
  const std::string scheme = onServer ? "file:" : onDrive ? "file:///" : "file://";
  const std::size_t drive = onDrive ? 2 : 0;
  return scheme + path.substr(0, drive) + PercentEncoded(path.substr(drive));
}

/// An absolute URI has no base: "uriBaseId" is only for relative ones.
Json ArtifactLocation(const CheckReport& report, const std::string& file) {
  const std::optional<FilePath> elsewhere = Elsewhere(report, file);
  if (elsewhere) return {{"uri", FileUri(elsewhere->absolute)}};
  return {{"uri", PercentEncoded(file)}, {"uriBaseId", kBase}};
}

Json Location(const CheckReport& report, const Place& place) {
  Json physical;
  physical["artifactLocation"] = ArtifactLocation(report, place.file);
  if (place.line > 0) {
    physical["region"]["startLine"] = place.line;
    if (place.column > 0) physical["region"]["startColumn"] = place.column;
  }
  return {{"physicalLocation", std::move(physical)}};
}

class Results {
 public:
  explicit Results(const CheckReport& report) : m_report(report) {
    for (std::size_t i = 0; i < report.rules.size(); ++i) m_indexes[report.rules[i]->id] = i;
  }

  Json All() const {
    Json results = Json::array();
    const std::vector<std::string> fingerprints = Fingerprints(m_report.findings);
    for (std::size_t i = 0; i < m_report.findings.size(); ++i) {
      results.push_back(Found(i, fingerprints[i]));
    }
    if (m_report.baseline) AddAbsent(results);
    return results;
  }

 private:
  Json Found(std::size_t i, const std::string& fingerprint) const {
    const RuleFinding& finding = m_report.findings[i];
    Json result = Result(finding.rule, finding.severity, Escaped(finding.message));
    if (!finding.place.file.empty()) {
      result["locations"] = Json::array({Location(m_report, finding.place)});
    }
    AddRelated(result, finding);
    result["partialFingerprints"][kFingerprint] = fingerprint;
    if (m_report.baseline) result["baselineState"] = IsAccepted(m_report, i) ? "unchanged" : "new";
    return result;
  }

  /// Adds the related locations, and as a property the sets of their IDs.
  void AddRelated(Json& result, const RuleFinding& finding) const {
    std::vector<std::size_t> ids;  // 0 for a place that is no location
    for (const RelatedPlace& related : finding.related) {
      ids.push_back(related.place.file.empty() ? 0 : result["relatedLocations"].size() + 1);
      if (ids.back() == 0) continue;
      Json location = {{"id", ids.back()}};
      location.update(Location(m_report, related.place));
      location["message"] = Message(Escaped(related.message));
      result["relatedLocations"].push_back(std::move(location));
    }
    for (const std::vector<std::size_t>& choice : finding.choices) {
      Json set = Json::array();
      for (const std::size_t position : choice) {
        if (ids[position] != 0) set.push_back(ids[position]);
      }
      result["properties"]["choices"].push_back(std::move(set));
    }
  }

  void AddAbsent(Json& results) const {
    const Baseline found = BaselineOf(m_report.findings);
    for (const auto& [key, count] : m_report.baseline->absent) {
      const auto others = found.find(key);
      const std::size_t before = others == found.end() ? 0 : others->second;
      Json result = Result(key.rule, SeverityOf(key.rule), AbsentText(key));
      if (count > 1) result["occurrenceCount"] = count;
      result["partialFingerprints"][kFingerprint] = Fingerprint(key, before);
      result["baselineState"] = "absent";
      results.push_back(std::move(result));
    }
  }

  Json Result(const std::string& rule, Severity severity, const std::string& message) const {
    Json result = {{"ruleId", rule}};
    const auto index = m_indexes.find(rule);
    if (index != m_indexes.end()) result["ruleIndex"] = index->second;
    result["level"] = Word(severity);
    result["message"] = Message(message);
    return result;
  }

  Severity SeverityOf(const std::string& rule) const {
    const auto index = m_indexes.find(rule);
    return index == m_indexes.end() ? Severity::kNote : m_report.rules[index->second]->severity;
  }

  static std::string AbsentText(const FindingKey& key) {
    std::string text = "accepted by the baseline and no longer found";
    if (!key.plugin.empty()) text += "; plugin \"" + key.plugin + "\"";
    if (!key.subject.empty()) text += "; \"" + key.subject + "\"";
    return text;
  }

  const CheckReport& m_report;
  std::map<std::string, std::size_t> m_indexes;  // of the rules
};

}  // namespace

std::string FolderUri(const std::string& folder) {
  const std::string uri = FileUri(folder);
  return uri.back() == '/' ? uri : uri + "/";
}

std::string FindingsSarif(const CheckReport& report) {
  Json rules = Json::array();
  for (const Rule* rule : report.rules) rules.push_back(RuleJson(*rule));
  Json run;
  run["tool"]["driver"] = {
      {"name", "HUB check"}, {"semanticVersion", report.toolVersion}, {"rules", std::move(rules)}};
  run["invocations"] = Json::array({{{"executionSuccessful", true}}});
  run["originalUriBaseIds"][kBase]["uri"] = FolderUri(report.folder);
  run["columnKind"] = "unicodeCodePoints";
  run["results"] = Results(report).All();
  Json log;
  log["$schema"] = kSchema;
  log["version"] = "2.1.0";
  log["runs"] = Json::array({std::move(run)});
  return log.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
