#include "host/RunTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "workbench/output/Text.h"

namespace {

using State = PluginRun::State;

constexpr std::size_t kMostRows = 40;
constexpr std::size_t kCellsWidth = 14 + 1 + 9 + 3 + 14 + 1 + 9 + 3;  // behind the name
constexpr std::size_t kLeastReasonWidth = 24;

constexpr char kRed[] = "\x1b[31m";
constexpr char kGreen[] = "\x1b[32m";
constexpr char kYellow[] = "\x1b[33m";
constexpr char kPlain[] = "\x1b[0m";

std::string Milliseconds(std::int64_t ms) {
  return ms < 0 ? std::string() : fmt::format("{} ms", ms);
}

std::string StartText(const PluginRun& plugin) {
  switch (plugin.started) {
    case State::kStarted:
      return "started";
    case State::kInitFailed:
      return "INIT FAILED";
    case State::kNotLoaded:
      return "NOT LOADED";
    default:
      return plugin.startedAtNs < 0 ? "NEVER BEGUN" : "NOT RETURNED";
  }
}

std::string StopText(const PluginRun& plugin) {
  switch (plugin.state) {
    case State::kStopped:
      return plugin.uninitMs < 0 ? "-" : "stopped";
    case State::kStopRefused:
      return "STOP REFUSED";
    case State::kInUnInit:
      return "NOT RETURNED";
    default:
      return "-";
  }
}

std::string WithoutTrailingBlanks(std::string line) {
  line.resize(line.find_last_not_of(' ') + 1);
  return line;
}

/// `text` in lines of at most `columns`, broken at blanks where there are any.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns) {
  std::vector<std::string> lines(1);
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string word = text.substr(at, end - at);
    std::string& line = lines.back();
    if (line.empty()) {
      line = word;
    } else if (Columns(line) + 1 + Columns(word) <= columns) {
      line += " " + word;
    } else {
      lines.push_back(word);
    }
    at = end + 1;
  }
  return lines;
}

class Table {
 public:
  Table(std::size_t nameWidth, const TableStyle& style) : m_nameWidth(nameWidth), m_style(style) {}

  void Row(const std::string& name, const std::string& start, const std::string& startCost,
           const std::string& stop, const std::string& stopCost, const std::string& reason,
           bool attention = false) {
    const std::string cells = PadRight(start, 14) + " " + PadLeft(startCost, 9) + "   " +
                              PadRight(stop, 14) + " " + PadLeft(stopCost, 9) + "   ";
    const std::string shownName = PadRight(name, m_nameWidth) + "  ";
    const std::vector<std::string> lines = ReasonLines(reason);
    const std::string first = WithoutTrailingBlanks(shownName + cells + lines.front());
    Line(attention ? Colored(first, kRed) : first);
    for (std::size_t i = 1; i < lines.size(); ++i) Line(Indent() + lines[i]);
  }

  void Rule() { Line(std::string(RuleWidth(), '-')); }
  void Line(const std::string& line) { m_text += line + "\n"; }

  std::string Colored(const std::string& text, const char* color) const {
    return m_style.color ? color + text + kPlain : text;
  }

  const std::string& Text() const { return m_text; }

 private:
  std::size_t RuleWidth() const {
    const std::size_t whole = m_nameWidth + 2 + kCellsWidth + 1;
    return m_style.columns == 0 ? whole : std::min(whole, m_style.columns);
  }

  /// Where a reason begins, if there is room for one; else it stands on lines of its own.
  bool ReasonBesideCells() const {
    return m_style.columns == 0 ||
           m_style.columns >= m_nameWidth + 2 + kCellsWidth + kLeastReasonWidth;
  }

  std::string Indent() const {
    return ReasonBesideCells() ? std::string(m_nameWidth + 2 + kCellsWidth, ' ')
                               : std::string(4, ' ');
  }

  std::vector<std::string> ReasonLines(const std::string& reason) const {
    if (m_style.columns == 0) return {reason};
    std::vector<std::string> lines = Wrapped(reason, m_style.columns - Indent().size());
    if (!ReasonBesideCells() && !reason.empty()) lines.insert(lines.begin(), std::string());
    return lines;
  }

  const std::size_t m_nameWidth;
  const TableStyle& m_style;
  std::string m_text;
};

/// Those that need attention first, else in the model's order.
std::vector<const PluginRun*> Sorted(const RunState& state) {
  std::vector<const PluginRun*> plugins;
  for (const PluginRun& plugin : state.Plugins()) {
    if (IsStarted(plugin.head)) plugins.push_back(&plugin);
  }
  std::stable_partition(plugins.begin(), plugins.end(),
                        [](const PluginRun* plugin) { return NeedsAttention(*plugin); });
  return plugins;
}

std::string ShownName(const PluginRun& plugin) {
  return plugin.head.id.empty() ? "(no ID)" : Escaped(plugin.head.id);
}

std::int64_t PhaseMs(const RunState& state, const char* name) {
  const RunState::Phase* phase = state.FindPhase(name);
  return phase == nullptr || phase->endNs < 0 ? -1 : (phase->endNs - phase->beginNs) / 1'000'000;
}

const char* VerdictColor(ExitStatus status) {
  return status == kOk ? kGreen : status == kDegraded ? kYellow : kRed;
}

}  // namespace

std::string RunTable(const RunState& state, const Verdict& verdict, const TableStyle& style) {
  const std::vector<const PluginRun*> plugins = Sorted(state);
  std::size_t nameWidth = Columns("Plugin");
  for (const PluginRun* plugin : plugins) {
    nameWidth = std::max(nameWidth, Columns(ShownName(*plugin)));
  }
  const std::string total = Count(plugins.size(), "plugin");
  nameWidth = std::max(nameWidth, Columns(total));

  Table table(nameWidth, style);
  table.Row("Plugin", "Start", "Init", "Stop", "UnInit", "Reason");
  table.Rule();
  std::size_t folded = 0;
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    const PluginRun& plugin = *plugins[i];
    const bool attention = NeedsAttention(plugin);
    if (!attention && !style.all && plugins.size() > kMostRows && i >= kMostRows) {
      ++folded;
      continue;
    }
    table.Row(ShownName(plugin), StartText(plugin), Milliseconds(plugin.initMs), StopText(plugin),
              Milliseconds(plugin.uninitMs), ReasonText(plugin), attention);
  }
  if (folded != 0) {
    table.Line(fmt::format("and {} that need no attention (--all shows them)",
                           Count(folded, "more plugin")));
  }
  table.Rule();
  table.Row(total, "total", Milliseconds(PhaseMs(state, RunPhase::kStart)), "total",
            Milliseconds(PhaseMs(state, RunPhase::kStop)), "");
  table.Line(table.Colored(Escaped(verdict.sentence), VerdictColor(verdict.exitStatus)));
  return table.Text();
}
