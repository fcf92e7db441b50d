#include "host/RunTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/StatusText.h"
#include "workbench/output/Text.h"

namespace {

using State = PluginRun::State;

constexpr std::size_t kMostRows = 40;
constexpr std::size_t kCostWidth = 9;  // "100000 ms"
constexpr std::size_t kLeastNameWidth = 8;
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
      return plugin.uninitMs < 0 ? "NOT RETURNED" : "NOT UNMAPPED";
    default:
      return "-";
  }
}

std::string WithoutTrailingBlanks(std::string line) {
  line.resize(line.find_last_not_of(' ') + 1);
  return line;
}

/// The widths of the columns and of the gaps between them.
struct Layout {
  std::size_t name;
  std::size_t nameGap;
  std::size_t state;
  std::size_t gap;

  std::size_t CellsBegin() const { return name + nameGap; }
  std::size_t CellsEnd() const { return CellsBegin() + 2 * (state + 1 + kCostWidth) + gap; }
  std::size_t ReasonBegin() const { return CellsEnd() + gap; }
};

/// The usual layout, or on a terminal that is too narrow for it one with smaller gaps. Longer names
/// are cut, so that the cells stay in line.
Layout LayoutFor(std::size_t longestName, std::size_t columns) {
  const Layout usual = {std::min(longestName, NameColumns(columns)), 2, 14, 3};
  if (columns == 0 || usual.CellsEnd() <= columns) return usual;
  Layout narrow = {0, 1, 12, 1};
  const std::size_t cells = narrow.CellsEnd();
  const std::size_t left = columns > cells ? columns - cells : 0;
  narrow.name = std::min(longestName, std::max(left, kLeastNameWidth));
  return narrow;
}

class Table {
 public:
  Table(std::size_t longestName, const TableStyle& style)
      : m_layout(LayoutFor(longestName, style.columns)), m_style(style) {}

  void Row(const std::string& name, const std::string& start, const std::string& startCost,
           const std::string& stop, const std::string& stopCost, const std::string& reason,
           bool attention = false) {
    const std::string gap(m_layout.gap, ' ');
    const std::string cells =
        PadRight(CutToColumns(name, m_layout.name), m_layout.CellsBegin()) +
        PadRight(start, m_layout.state) + " " + PadLeft(startCost, kCostWidth) + gap +
        PadRight(stop, m_layout.state) + " " + PadLeft(stopCost, kCostWidth) + gap;
    std::vector<std::string> lines;
    if (ReasonBesideCells()) {
      lines = Wrapped(cells + reason, m_style.columns, m_layout.ReasonBegin());
    } else {
      const std::string indent(kSentenceIndent, ' ');
      if (!reason.empty()) lines = Wrapped(indent + reason, m_style.columns, kSentenceIndent);
      lines.insert(lines.begin(), CutToColumns(WithoutTrailingBlanks(cells), m_style.columns));
    }
    lines.front() = WithoutTrailingBlanks(lines.front());
    if (attention) lines.front() = Colored(lines.front(), kRed);
    Add(lines);
  }

  void Rule() {
    const std::size_t whole = m_layout.ReasonBegin() + 1;
    Add({std::string(m_style.columns == 0 ? whole : std::min(whole, m_style.columns), '-')});
  }

  void Sentence(const std::string& text, const char* color = nullptr) {
    std::vector<std::string> lines = Wrapped(text, m_style.columns, kSentenceIndent);
    if (color != nullptr) {
      for (std::string& line : lines) line = Colored(line, color);
    }
    Add(lines);
  }

  const std::string& Text() const { return m_text; }

 private:
  void Add(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) m_text += line + "\n";
  }

  std::string Colored(const std::string& text, const char* color) const {
    return m_style.color ? color + text + kPlain : text;
  }

  /// Whether a reason fits on the plugin's line; otherwise it is printed on the lines below.
  bool ReasonBesideCells() const {
    return m_style.columns == 0 || m_style.columns >= m_layout.ReasonBegin() + kLeastReasonWidth;
  }

  const Layout m_layout;
  const TableStyle& m_style;
  std::string m_text;
};

/// The plugins that need attention first; within each group, in the model's order.
std::vector<const PluginRun*> Sorted(const RunState& state) {
  std::vector<const PluginRun*> plugins;
  for (const PluginRun& plugin : state.Plugins()) {
    if (IsStarted(plugin.head)) plugins.push_back(&plugin);
  }
  std::stable_partition(plugins.begin(), plugins.end(),
                        [](const PluginRun* plugin) { return NeedsAttention(*plugin); });
  return plugins;
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
  const std::string total = Count(plugins.size(), "plugin");
  std::size_t longestName = std::max(Columns("Plugin"), Columns(total));
  for (const PluginRun* plugin : plugins) {
    longestName = std::max(longestName, Columns(ShownID(plugin->head.id)));
  }

  Table table(longestName, style);
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
    table.Row(ShownID(plugin.head.id), StartText(plugin), Milliseconds(plugin.initMs),
              StopText(plugin), Milliseconds(plugin.uninitMs), Escaped(ReasonText(plugin)),
              attention);
  }
  if (folded != 0) {
    table.Sentence(fmt::format("and {} that {} no attention (--all shows {})",
                               Count(folded, "more plugin"), folded == 1 ? "needs" : "need",
                               folded == 1 ? "it" : "them"));
  }
  table.Rule();
  table.Row(total, "total", Milliseconds(PhaseMs(state, RunPhase::kStart)), "total",
            Milliseconds(PhaseMs(state, RunPhase::kStop)), "");
  table.Sentence(Escaped(verdict.sentence), VerdictColor(verdict.exitStatus));
  return table.Text();
}
