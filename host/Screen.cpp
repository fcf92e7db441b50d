#include "host/Screen.h"

#include <algorithm>
#include <cstdlib>

#include "host/StatusText.h"
#include "workbench/output/Text.h"

namespace {

constexpr std::chrono::seconds kBetweenWaitingLines{1};
constexpr std::size_t kUsualNameColumns = 24;
constexpr char kClearLine[] = "\r\x1b[K";

bool IsSet(const char* variable) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

/// `text` wrapped to `columns`, each line with a line feed.
std::string Lines(const std::string& text, std::size_t columns, std::size_t indent) {
  std::string lines;
  for (const std::string& line : Wrapped(text, columns, indent)) lines += line + "\n";
  return lines;
}

}  // namespace

bool WantsColor(Color color, bool onTerminal) {
  if (color != Color::kAuto) return color == Color::kAlways;
  return onTerminal && !IsSet("NO_COLOR");
}

Screen::Screen(Output& output, Color color)
    : m_output(output),
      m_onTerminal(output.IsTerminal()),
      m_colored(WantsColor(color, m_onTerminal)),
      m_lastWaitingLine(std::chrono::steady_clock::now()) {}

std::size_t Screen::Columns() const {
  return m_onTerminal ? static_cast<std::size_t>(m_output.Columns()) : 0;
}

void Screen::Update(const RunState& state, const std::string& waiting) {
  PrintEvents(state);
  const auto now = std::chrono::steady_clock::now();
  if (waiting.empty()) {
    ClearWaitingLine();
    m_lastWaitingLine = now;
  } else if (m_output.IsBehind()) {
    // The reader is slow: skip this line, the next call writes a newer one.
  } else if (m_onTerminal) {
    // Leaves one column free: a full line would wrap, and kClearLine clears only one row.
    m_output.Write(kClearLine + CutToColumns(waiting, Columns() - 1));
    m_waitingLineStands = true;
  } else if (now - m_lastWaitingLine >= kBetweenWaitingLines) {
    m_lastWaitingLine = now;
    m_output.Write("  " + waiting + "\n");
  }
}

void Screen::Finish(const RunState& state) {
  PrintEvents(state);
  ClearWaitingLine();
}

void Screen::PrintLine(const std::string& line) {
  ClearWaitingLine();
  m_output.Write(Lines(line, Columns(), kSentenceIndent));
}

void Screen::PrintEvents(const RunState& state) {
  const std::vector<PluginRun>& plugins = state.Plugins();
  m_shown.resize(plugins.size(), PluginRun::State::kWaiting);
  std::string lines;
  for (std::size_t i = 0; i < plugins.size(); ++i) {
    if (plugins[i].state == m_shown[i]) continue;
    m_shown[i] = plugins[i].state;
    const std::string text = EventText(plugins[i]);
    if (!text.empty()) lines += EventLine(plugins[i], text);
  }
  if (lines.empty()) return;
  ClearWaitingLine();
  m_output.Write(lines);
}

std::string Screen::EventLine(const PluginRun& plugin, const std::string& text) const {
  const std::size_t columns = Columns();
  const std::size_t most = NameColumns(columns);
  const std::size_t width = std::min(kUsualNameColumns, most);
  const std::string name = PadRight(CutToColumns(ShownID(plugin.head.id), most), width);
  return Lines(name + " " + Escaped(text), columns, width + 1);
}

void Screen::ClearWaitingLine() {
  if (m_waitingLineStands) m_output.Write(kClearLine);
  m_waitingLineStands = false;
}
