#include "workbench/check/RuleText.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "workbench/output/LetterCase.h"
#include "workbench/output/Nearest.h"
#include "workbench/output/Text.h"

namespace {

struct Area {
  const char* beginning;  // of the IDs
  const char* name;
};

constexpr Area kAreas[] = {{"TEV1", "files"},     {"TEV2", "plugins"},   {"TEV3", "dependencies"},
                           {"TEV4", "libraries"}, {"TEV5", "catalogue"}, {"TEV6", "portal"}};

constexpr std::size_t kSeverityColumns = 7;  // of "warning"

bool BeginsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

std::string WrappedLines(const std::string& text, std::size_t columns) {
  std::string wrapped;
  for (const std::string& line : Lines(text)) {
    for (const std::string& part : Wrapped(line, columns, 0)) wrapped += part + "\n";
  }
  return wrapped;
}

/// The words between the commas, without blanks around them.
std::vector<std::string> Words(const std::string& list) {
  std::vector<std::string> words;
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    std::string word = list.substr(begin, end - begin);
    word.erase(0, word.find_first_not_of(' '));
    word.erase(word.find_last_not_of(' ') + 1);
    words.push_back(std::move(word));
    begin = end + 1;
  }
  return words;
}

std::vector<std::string> IdsOf(const std::vector<const Rule*>& rules) {
  std::vector<std::string> ids;
  ids.reserve(rules.size());
  for (const Rule* rule : rules) ids.emplace_back(rule->id);
  return ids;
}

bool IsNameOf(const Area& area, const std::string& word) {
  return SameButCase(word, area.beginning) || SameButCase(word, area.name);
}

/// Whether `word` names the rule, alone or with its area.
bool Names(const std::string& word, const std::string& id) {
  return SameButCase(word, id) ||
         std::any_of(std::begin(kAreas), std::end(kAreas), [&](const Area& area) {
           return BeginsWith(id, area.beginning) && IsNameOf(area, word);
         });
}

bool IsArea(const std::string& word) {
  return std::any_of(std::begin(kAreas), std::end(kAreas),
                     [&](const Area& area) { return IsNameOf(area, word); });
}

/// Why a word of an option names nothing.
std::string WrongWord(const std::vector<const Rule*>& all, const std::string& word) {
  if (word.empty()) return "a rule or an area is missing";
  std::vector<std::string> known = IdsOf(all);
  for (const Area& area : kAreas) {
    known.emplace_back(area.name);
    known.emplace_back(area.beginning);
  }
  const std::string meant = DidYouMean(word, known);
  return "\"" + Escaped(word) + "\" is no rule and no area" +
         (meant.empty() ? "; --list-rules shows them" : meant);
}

struct NamedRules {
  std::set<std::string> ids;
  std::string problem;
};

/// The rules that a list of words names; none for an empty list.
NamedRules Named(const std::vector<const Rule*>& all, const std::string& list) {
  NamedRules named;
  if (list.empty()) return named;
  for (const std::string& word : Words(list)) {
    bool found = IsArea(word);
    for (const Rule* rule : all) {
      if (!Names(word, rule->id)) continue;
      named.ids.insert(rule->id);
      found = true;
    }
    if (!found) return {{}, WrongWord(all, word)};
  }
  return named;
}

}  // namespace

std::string AreaOf(const std::string& id) {
  for (const Area& area : kAreas) {
    if (BeginsWith(id, area.beginning)) return area.name;
  }
  return "";
}

std::string Indented(const std::string& text) {
  std::string indented;
  const char* before = "";
  for (const std::string& line : Lines(text)) {
    indented += before + std::string(line.empty() ? 0 : 4, ' ') + line;
    before = "\n";
  }
  return indented;
}

std::string RuleList(const std::vector<const Rule*>& rules) {
  std::string text;
  std::string area;
  for (const Rule* rule : rules) {
    if (AreaOf(rule->id) != area) {
      area = AreaOf(rule->id);
      text += (text.empty() ? "" : "\n") + area + "\n";
    }
    text += "  " + std::string(rule->id) + "  " + PadRight(Word(rule->severity), kSeverityColumns) +
            "  " + rule->summary + "\n";
  }
  return text;
}

std::string ExplainedRule(const Rule& rule, std::size_t columns) {
  std::string text = WrappedLines(
      std::string(rule.id) + ": " + Word(rule.severity) + ": " + rule.summary, columns);
  text += "\n" + WrappedLines(rule.explanation, columns) + "\nExample:\n\n";
  return text + Indented(rule.example) + "\n\n" +
         WrappedLines(std::string("Remedy: ") + rule.remedy, columns);
}

RuleChoice ChooseRules(const std::vector<const Rule*>& all, const std::string& select,
                       const std::string& ignore) {
  const NamedRules selected = Named(all, select);
  if (!selected.problem.empty()) return {{}, "--select: " + selected.problem};
  const NamedRules ignored = Named(all, ignore);
  if (!ignored.problem.empty()) return {{}, "--ignore: " + ignored.problem};
  RuleChoice choice;
  for (const Rule* rule : all) {
    const bool taken = select.empty() || selected.ids.count(rule->id) > 0;
    if (taken && ignored.ids.count(rule->id) == 0) choice.rules.push_back(rule);
  }
  if (choice.rules.empty()) choice.problem = "--select and --ignore leave no rule";
  return choice;
}

const Rule* RuleNamed(const std::vector<const Rule*>& all, const std::string& id) {
  const auto found = std::find_if(all.begin(), all.end(),
                                  [&](const Rule* rule) { return SameButCase(rule->id, id); });
  return found == all.end() ? nullptr : *found;
}

std::string NoSuchRule(const std::vector<const Rule*>& all, const std::string& id) {
  const std::string meant = DidYouMean(id, IdsOf(all));
  return "there is no rule \"" + Escaped(id) + "\"" +
         (meant.empty() ? "; --list-rules shows them" : meant);
}
