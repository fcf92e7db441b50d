#include "workbench/check/CheckReport.h"

#include <cstdint>
#include <map>

namespace {

/// The FNV-1a hash of the texts, each followed by a zero byte, in hexadecimal.
std::string Hash(const std::vector<std::string>& texts) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  const auto add = [&hash](char c) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001b3U;
  };
  for (const std::string& text : texts) {
    for (const char c : text) add(c);
    add('\0');
  }
  std::string hex;
  for (int shift = 60; shift >= 0; shift -= 4) hex += "0123456789abcdef"[(hash >> shift) & 0xFU];
  return hex;
}

}  // namespace

std::optional<FilePath> Elsewhere(const CheckReport& report, const std::string& file) {
  for (std::size_t end = file.size(); end != std::string::npos && end > 0;
       end = file.rfind('/', end - 1)) {
    const auto found = report.elsewhere.find(file.substr(0, end));
    if (found == report.elsewhere.end()) continue;
    const std::string inside = file.substr(end);
    return FilePath{found->second.absolute + inside, found->second.shown + inside};
  }
  return std::nullopt;
}

bool IsAccepted(const CheckReport& report, std::size_t finding) {
  return report.baseline && report.baseline->accepted[finding];
}

FindingCounts CountFindings(const CheckReport& report) {
  FindingCounts counts;
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    if (IsAccepted(report, i)) {
      ++counts.accepted;
    } else if (report.findings[i].severity == Severity::kError) {
      ++counts.errors;
    } else if (report.findings[i].severity == Severity::kWarning) {
      ++counts.warnings;
    } else {
      ++counts.notes;
    }
  }
  if (report.baseline) {
    for (const auto& [key, count] : report.baseline->absent) counts.absent += count;
  }
  return counts;
}

std::vector<std::string> Fingerprints(const RuleFindings& findings) {
  std::vector<std::string> fingerprints;
  fingerprints.reserve(findings.size());
  std::map<FindingKey, std::size_t> before;
  for (const RuleFinding& finding : findings) {
    const FindingKey key = KeyOf(finding);
    fingerprints.push_back(Fingerprint(key, before[key]++));
  }
  return fingerprints;
}

std::string Fingerprint(const FindingKey& key, std::size_t before) {
  return Hash({key.rule, key.plugin, key.subject, std::to_string(before)});
}
