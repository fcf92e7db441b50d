#include "workbench/check/Baseline.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>
#include <utility>

#include "workbench/output/Nearest.h"
#include "workbench/output/Text.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint64_t kSchema = 1;

std::string InQuotes(const std::string& text) {
  return "\"" + Escaped(text) + "\"";
}

/// Reads a text and counts its lines: `line` is that of the last character that was read.
struct LineIterator {
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  const char* at;
  std::size_t* line;
  bool behindLineFeed = false;

  reference operator*() const { return *at; }
  LineIterator& operator++() {
    if (behindLineFeed) ++*line;
    behindLineFeed = *at == '\n';
    ++at;
    return *this;
  }
  bool operator==(const LineIterator& other) const { return at == other.at; }
  bool operator!=(const LineIterator& other) const { return at != other.at; }
};

/// Receives the parts of a baseline's JSON in their order and refuses the first one that does not
/// belong there: a function that returns false ends the parser.
class BaselineHandler {
 public:
  explicit BaselineHandler(const std::size_t& line) : m_parserLine(line) {}

  // NOLINTBEGIN(readability-identifier-naming): the names that the parser calls
  bool null() { return RefuseValue(); }
  bool boolean(bool) { return RefuseValue(); }
  bool number_integer(std::int64_t) { return RefuseValue(); }
  bool number_float(double, const std::string&) { return RefuseValue(); }
  bool binary(Json::binary_t&) { return RefuseValue(); }

  bool number_unsigned(std::uint64_t number) {
    if (m_level == Level::kFile && m_member == "schema") {
      return number == kSchema || Refuse("this is a baseline of schema " + std::to_string(number) +
                                         "; this version reads schema " + std::to_string(kSchema));
    }
    if (m_level != Level::kEntry || m_member != "count") return RefuseValue();
    m_count = static_cast<std::size_t>(number);
    return (number >= 1 && number <= kMostAccepted) || RefuseValue();
  }

  bool string(const std::string& text) {
    std::string* field = m_level == Level::kEntry ? EntryField() : nullptr;
    if (field == nullptr) return RefuseValue();
    *field = Escaped(text);
    return true;
  }

  bool start_object(std::size_t) {
    if (m_level == Level::kBefore) {
      m_level = Level::kFile;
      return true;
    }
    if (m_level != Level::kList) return RefuseValue();
    m_level = Level::kEntry;
    m_key = {};
    m_entryLine = m_parserLine;
    m_entryMembers.clear();
    return true;
  }

  bool key(const std::string& name) {
    static const std::vector<std::string> ofFile = {"schema", "findings"};
    static const std::vector<std::string> ofEntry = {"rule", "plugin", "subject", "count"};
    const bool inEntry = m_level == Level::kEntry;
    const std::vector<std::string>& names = inEntry ? ofEntry : ofFile;
    m_member = name;
    m_line = m_parserLine;
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      return Refuse(InQuotes(name) + " is no member of a " + (inEntry ? "finding" : "baseline") +
                    DidYouMean(name, names));
    }
    std::set<std::string>& members = inEntry ? m_entryMembers : m_fileMembers;
    return members.insert(name).second || Refuse(InQuotes(name) + " stands there twice");
  }

  bool end_object() {
    m_line = m_parserLine;
    if (m_level == Level::kFile) {
      return Has(m_fileMembers, "schema") && Has(m_fileMembers, "findings");
    }
    m_level = Level::kList;
    m_line = m_entryLine;
    return Has(m_entryMembers, "rule") && Has(m_entryMembers, "count") && AddEntry();
  }

  bool start_array(std::size_t) {
    if (m_level != Level::kFile || m_member != "findings") return RefuseValue();
    m_level = Level::kList;
    return true;
  }

  bool end_array() {
    m_level = Level::kFile;
    return true;
  }

  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
    m_line = m_parserLine;
    return Refuse("this is no JSON");
  }
  // NOLINTEND(readability-identifier-naming)

  BaselineReading Reading() && { return {std::move(m_baseline), std::move(m_problem)}; }

 private:
  enum class Level { kBefore, kFile, kList, kEntry };

  bool Refuse(const std::string& problem) {
    m_baseline.clear();
    m_problem = "line " + std::to_string(m_line) + ": " + problem;
    return false;
  }

  /// Refuses a value of the wrong kind, at the line of its member's name.
  bool RefuseValue() {
    if (m_level == Level::kBefore) return Refuse("a baseline must be a JSON object");
    if (m_level == Level::kList) {
      m_line = m_parserLine;
      return Refuse("a finding must be a JSON object");
    }
    if (m_member == "schema") return Refuse("\"schema\" must be a number");
    if (m_member == "findings") return Refuse("\"findings\" must be a list");
    if (m_member == "count") {
      return Refuse("\"count\" must be a whole number from 1 to " + std::to_string(kMostAccepted));
    }
    return Refuse(InQuotes(m_member) + " must be a text");
  }

  bool Has(const std::set<std::string>& members, const char* name) {
    return members.count(name) > 0 || Refuse("\"" + std::string(name) + "\" is missing");
  }

  std::string* EntryField() {
    if (m_member == "rule") return &m_key.rule;
    if (m_member == "plugin") return &m_key.plugin;
    return m_member == "subject" ? &m_key.subject : nullptr;
  }

  bool AddEntry() {
    const auto [line, isNew] = m_lines.emplace(m_key, m_entryLine);
    if (!isNew) {
      return Refuse("the same rule, plugin and subject as in line " + std::to_string(line->second) +
                    "; write one finding with the sum of the counts");
    }
    m_baseline.emplace(m_key, m_count);
    return true;
  }

  const std::size_t& m_parserLine;
  std::size_t m_line = 1;  // that a problem names
  Level m_level = Level::kBefore;
  std::string m_member;  // the last name
  std::set<std::string> m_fileMembers;
  std::set<std::string> m_entryMembers;

  // The finding that is being read.
  FindingKey m_key;
  std::size_t m_count = 0;
  std::size_t m_entryLine = 0;

  Baseline m_baseline;
  std::map<FindingKey, std::size_t> m_lines;  // of the findings
  std::string m_problem;
};

auto Tie(const FindingKey& key) {
  return std::tie(key.rule, key.plugin, key.subject);
}

bool Contains(const std::vector<const Rule*>& rules, const std::string& id) {
  return std::any_of(rules.begin(), rules.end(), [&](const Rule* rule) { return rule->id == id; });
}

}  // namespace

FindingKey KeyOf(const RuleFinding& finding) {
  return {Escaped(finding.rule), Escaped(finding.plugin), Escaped(finding.subject)};
}

bool operator<(const FindingKey& a, const FindingKey& b) {
  return Tie(a) < Tie(b);
}

bool operator==(const FindingKey& a, const FindingKey& b) {
  return Tie(a) == Tie(b);
}

Baseline BaselineOf(const RuleFindings& findings) {
  Baseline baseline;
  for (const RuleFinding& finding : findings) ++baseline[KeyOf(finding)];
  return baseline;
}

std::string BaselineText(const Baseline& baseline) {
  std::string text = "{\n\"schema\": " + std::to_string(kSchema) + ",\n\"findings\": [";
  const char* before = "\n";
  for (const auto& [key, count] : baseline) {
    const Json entry = {
        {"rule", key.rule}, {"plugin", key.plugin}, {"subject", key.subject}, {"count", count}};
    text += before + entry.dump(-1, ' ', false, Json::error_handler_t::replace);
    before = ",\n";
  }
  return text + "\n]\n}\n";
}

std::string WriteBaseline(const RuleFindings& findings) {
  return BaselineText(BaselineOf(findings));
}

BaselineReading ReadBaseline(const std::string& text) {
  std::size_t line = 1;
  BaselineHandler handler(line);
  const char* begin = text.data();
  Json::sax_parse(LineIterator{begin, &line}, LineIterator{begin + text.size(), &line}, &handler);
  return std::move(handler).Reading();
}

AppliedBaseline Apply(const Baseline& baseline, const RuleFindings& findings,
                      const std::vector<const Rule*>& ran, const std::vector<const Rule*>& known) {
  AppliedBaseline applied;
  applied.accepted.reserve(findings.size());
  Baseline left = baseline;
  for (const RuleFinding& finding : findings) {
    const auto entry = left.find(KeyOf(finding));
    applied.accepted.push_back(entry != left.end());
    if (entry != left.end() && --entry->second == 0) left.erase(entry);
  }
  std::set<std::string> unknown;
  for (const auto& [key, count] : left) {
    if (!Contains(known, key.rule)) {
      unknown.insert(key.rule);
    } else if (Contains(ran, key.rule)) {
      applied.absent.emplace(key, count);
    }
  }
  applied.unknownRules.assign(unknown.begin(), unknown.end());
  return applied;
}
