#include "host/ProgressPrinter.h"

#include <iostream>

#include "host/LifeReport.h"
#include "reference/os/Terminal.h"

namespace {

constexpr std::chrono::seconds kBetweenWaitingLines{1};
constexpr std::size_t kTerminalColumns = 78;

}  // namespace

ProgressPrinter::ProgressPrinter(const PluginLives& lives)
    : m_lives(lives),
      m_onTerminal(StandardOutputIsTerminal()),
      m_lastWaitingLine(std::chrono::steady_clock::now()) {}

void ProgressPrinter::Update() {
  const std::vector<PluginLife> lives = m_lives.Snapshot();
  PrintEvents(lives);
  const auto now = std::chrono::steady_clock::now();
  std::string waiting = WaitingLine(lives, now);
  if (waiting.empty()) {
    ClearWaitingLine();
    m_lastWaitingLine = now;
  } else if (m_onTerminal) {
    if (waiting.size() > kTerminalColumns)
      waiting = waiting.substr(0, kTerminalColumns - 3) + "...";
    std::cout << "\r\x1b[K" << waiting << std::flush;
    m_waitingLineStands = true;
  } else if (now - m_lastWaitingLine >= kBetweenWaitingLines) {
    m_lastWaitingLine = now;
    std::cout << "  " << waiting << std::endl;
  }
}

void ProgressPrinter::Finish() {
  PrintEvents(m_lives.Snapshot());
  ClearWaitingLine();
}

void ProgressPrinter::Say(const std::string& line) {
  ClearWaitingLine();
  std::cout << line << std::endl;
}

void ProgressPrinter::PrintEvents(const std::vector<PluginLife>& lives) {
  m_shown.resize(lives.size(), PluginLife::Phase::kWaiting);
  for (std::size_t i = 0; i < lives.size(); ++i) {
    if (lives[i].phase == m_shown[i]) continue;
    m_shown[i] = lives[i].phase;
    const std::string line = EventLine(lives[i]);
    if (!line.empty()) Say(line);
  }
}

void ProgressPrinter::ClearWaitingLine() {
  if (m_waitingLineStands) std::cout << "\r\x1b[K" << std::flush;
  m_waitingLineStands = false;
}
