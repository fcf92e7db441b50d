#include "workbench/check/FindingsText.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "workbench/check/SourceExcerpt.h"
#include "workbench/output/Text.h"

namespace {

constexpr char kBold[] = "\x1b[1m";
constexpr char kRed[] = "\x1b[31m";
constexpr char kGreen[] = "\x1b[32m";
constexpr char kMagenta[] = "\x1b[35m";
constexpr char kCyan[] = "\x1b[36m";
constexpr char kPlain[] = "\x1b[0m";

constexpr std::size_t kLineNumberColumns = 5;
constexpr std::size_t kMostRelated = 20;    // places of one finding
constexpr std::size_t kFewestColumns = 20;  // of a source line

const char* ColorOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return kCyan;
    case Severity::kWarning:
      return kMagenta;
    case Severity::kError:
      return kRed;
  }
  return kPlain;
}

/// The last line that was shown of the findings, or of the places related to them.
struct LastLine {
  std::string file;
  int line = 0;
  SourceText text;
};

bool SameLine(const Place& a, const Place& b) {
  return a.file == b.file && a.line == b.line;
}

class TextWriter {
 public:
  TextWriter(const CheckReport& report, const SourceLine& sourceLine, const TextStyle& style)
      : m_report(report), m_sourceLine(sourceLine), m_style(style) {}

  void Add(const RuleFinding& finding) {
    AddMessage(finding.place, finding.severity, finding.message, " [" + finding.rule + "]");
    AddSource(finding.place, m_ofFindings);
    const Place* shown = &finding.place;
    const std::size_t count = std::min(finding.related.size(), kMostRelated);
    for (std::size_t i = 0; i < count; ++i) {
      const RelatedPlace& related = finding.related[i];
      AddMessage(related.place, Severity::kNote, related.message, "");
      if (!SameLine(*shown, related.place)) AddSource(related.place, m_ofRelated);
      shown = &related.place;
    }
    if (count == finding.related.size()) return;
    AddMessage({}, Severity::kNote,
               Count(finding.related.size() - count, "more place") + "; --format json shows all",
               "");
  }

  std::string Text() && { return std::move(m_text); }

 private:
  std::string ShownFile(const std::string& file) const {
    const std::optional<FilePath> elsewhere = Elsewhere(m_report, file);
    return elsewhere ? elsewhere->shown : m_report.shownFolder + file;
  }

  std::string Colored(const std::string& text, const char* color) const {
    return m_style.color ? color + text + kPlain : text;
  }

  void AddMessage(const Place& place, Severity severity, const std::string& message,
                  const std::string& rule) {
    if (!place.file.empty()) {
      std::string path = Escaped(ShownFile(place.file)) + ":";
      if (place.line > 0) path += std::to_string(place.line) + ":";
      if (place.line > 0 && place.column > 0) path += std::to_string(place.column) + ":";
      m_text += Colored(path, kBold) + " ";
    }
    m_text += Colored(Word(severity) + std::string(":"), ColorOf(severity)) + " " +
              Escaped(message) + rule + "\n";
  }

  void AddSource(const Place& place, LastLine& last) {
    if (place.file.empty() || place.line <= 0) return;
    if (last.file != place.file || last.line != place.line) {
      last = {place.file, place.line, SourceText(m_sourceLine(place.file, place.line))};
    }
    const std::string number = PadLeft(std::to_string(place.line), kLineNumberColumns);
    const std::size_t gutter = number.size() + 3;
    const std::size_t columns =
        m_style.columns > gutter + kFewestColumns ? m_style.columns - gutter : kFewestColumns;
    const SourceExcerpt excerpt = last.text.Around(place.column, columns);
    if (excerpt.text.empty()) return;
    m_text += number + " | " + excerpt.text + "\n";
    if (excerpt.underlined == 0) return;
    m_text += std::string(number.size(), ' ') + " | " + std::string(excerpt.caret, ' ') +
              Colored("^" + std::string(excerpt.underlined - 1, '~'), kGreen) + "\n";
  }

  const CheckReport& m_report;
  const SourceLine& m_sourceLine;
  const TextStyle& m_style;
  LastLine m_ofFindings;
  LastLine m_ofRelated;
  std::string m_text;
};

/// What the baseline has and the check did not find.
std::string BaselineHints(const CheckReport& report, const FindingCounts& counts) {
  std::string hints;
  if (counts.absent > 0 && !report.changes) {
    hints += Count(counts.absent, "finding") + " of the baseline " +
             (counts.absent == 1 ? "is" : "are") +
             " no longer found; --write-baseline writes a baseline without " +
             (counts.absent == 1 ? "it" : "them") + "\n";
  }
  if (report.baseline && !report.baseline->unknownRules.empty()) {
    hints += "the baseline names rules that this version does not have: " +
             JoinNames(report.baseline->unknownRules, 5) + "\n";
  }
  return hints;
}

}  // namespace

std::string FindingsText(const CheckReport& report, const SourceLine& sourceLine,
                         const TextStyle& style) {
  TextWriter writer(report, sourceLine, style);
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    if (!IsAccepted(report, i)) writer.Add(report.findings[i]);
  }
  const FindingCounts counts = CountFindings(report);
  return std::move(writer).Text() + BaselineHints(report, counts) +
         CountsLine(counts, report.changes ? "found before too" : "accepted by the baseline") +
         "\n";
}

std::string CountsLine(const FindingCounts& counts, const std::string& accepted) {
  std::string line;
  const auto add = [&line](std::size_t count, const char* what) {
    if (count > 0) line += (line.empty() ? "" : ", ") + Count(count, what);
  };
  add(counts.errors, "error");
  add(counts.warnings, "warning");
  add(counts.notes, "note");
  const bool clean = line.empty();
  if (counts.accepted == 0) return clean ? "no findings" : line;
  return (clean ? "no new findings; " : line + "; ") + std::to_string(counts.accepted) +
         (clean ? "" : " more") + " " + accepted;
}
