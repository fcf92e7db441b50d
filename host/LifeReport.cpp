#include "host/LifeReport.h"

#include <algorithm>
#include <cstdio>

namespace {

using Phase = PluginLife::Phase;

std::string Seconds(std::chrono::steady_clock::duration duration) {
  const double seconds = std::chrono::duration<double>(duration).count();
  char text[32];
  std::snprintf(text, sizeof(text), "%.1f s", seconds);
  return text;
}

std::string Milliseconds(std::int64_t ms) {
  return ms < 0 ? "" : std::to_string(ms) + " ms";
}

/// How many columns a UTF-8 text takes, counting one for each character.
std::size_t Columns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

std::string Padded(const std::string& text, std::size_t width) {
  const std::size_t columns = Columns(text);
  return columns < width ? text + std::string(width - columns, ' ') : text;
}

std::string PaddedLeft(const std::string& text, std::size_t width) {
  const std::size_t columns = Columns(text);
  return columns < width ? std::string(width - columns, ' ') + text : text;
}

std::string StartText(const PluginLife& life) {
  switch (life.started) {
    case Phase::kStarted:
      return "started";
    case Phase::kInitFailed:
      return "INIT FAILED";
    case Phase::kNotLoaded:
      return "NOT LOADED";
    default:
      return life.phase == Phase::kWaiting ? "never begun" : "NEVER RETURNED";
  }
}

std::string StopText(const PluginLife& life) {
  switch (life.phase) {
    case Phase::kStopped:
      return "stopped";
    case Phase::kStopRefused:
      return "STOP REFUSED";
    case Phase::kInUnInit:
      return "NEVER RETURNED";
    default:
      return "-";
  }
}

bool Done(const PluginLife& life) {
  return life.phase != Phase::kWaiting && life.phase != Phase::kInInit &&
         life.phase != Phase::kInUnInit;
}

std::int64_t CountStarted(const std::vector<PluginLife>& lives, Phase how) {
  return std::count_if(lives.begin(), lives.end(),
                       [how](const PluginLife& life) { return life.started == how; });
}

}  // namespace

std::string WaitingLine(const std::vector<PluginLife>& lives,
                        std::chrono::steady_clock::time_point now) {
  std::string running;
  std::string heldBack;
  bool starting = false;
  for (const PluginLife& life : lives) {
    starting = starting || life.phase == Phase::kInInit || life.phase == Phase::kWaiting;
    if (life.phase == Phase::kInInit || life.phase == Phase::kInUnInit) {
      running += (running.empty() ? "" : ", ") + life.name + " (" + Seconds(now - life.since) + ")";
    } else if (life.phase == Phase::kWaiting) {
      heldBack += (heldBack.empty() ? "" : ", ") + life.name;
    }
  }
  if (running.empty() && heldBack.empty()) return std::string();
  const std::string whom = running.empty() ? "the dependencies of " + heldBack : running;
  if (!starting) return "waiting for " + whom;
  const auto done = std::count_if(lives.begin(), lives.end(), Done);
  return std::to_string(done) + " of " + std::to_string(lives.size()) + " done; waiting for " +
         whom;
}

std::string EventLine(const PluginLife& life) {
  const std::string name = Padded(life.name, 24) + " ";
  switch (life.phase) {
    case Phase::kStarted:
      return name + "started in " + Milliseconds(life.startMs);
    case Phase::kInitFailed:
      return name + "INIT FAILED after " + Milliseconds(life.startMs) + ": " + life.reason;
    case Phase::kNotLoaded:
      return name + "NOT LOADED: " + life.reason;
    case Phase::kStopped:
      return name + "stopped in " + Milliseconds(life.stopMs);
    case Phase::kStopRefused:
      return name + "STOP REFUSED; its library stays mapped";
    default:
      return std::string();
  }
}

std::string LifeTable(const std::vector<PluginLife>& lives, std::int64_t startMs,
                      std::int64_t stopMs) {
  std::size_t nameWidth = Columns("Plugin");
  for (const PluginLife& life : lives) nameWidth = std::max(nameWidth, Columns(life.name));

  const auto row = [nameWidth](const std::string& name, const std::string& start,
                               const std::string& startCost, const std::string& stop,
                               const std::string& stopCost, const std::string& reason) {
    std::string line = Padded(name, nameWidth) + "  " + Padded(start, 14) + " " +
                       PaddedLeft(startCost, 9) + "   " + Padded(stop, 14) + " " +
                       PaddedLeft(stopCost, 9) + "   " + reason;
    line.resize(line.find_last_not_of(' ') + 1);
    return line + "\n";
  };
  std::string table = row("Plugin", "Start", "Init", "Stop", "UnInit", "Reason");
  table += std::string(nameWidth + 58, '-') + "\n";
  for (const PluginLife& life : lives) {
    table += row(life.name, StartText(life), Milliseconds(life.startMs), StopText(life),
                 Milliseconds(life.stopMs), life.reason);
  }
  table += std::string(nameWidth + 58, '-') + "\n";
  const std::string total =
      std::to_string(lives.size()) + (lives.size() == 1 ? " plugin" : " plugins");
  table += row(total, "total", Milliseconds(startMs), "total", Milliseconds(stopMs), "");
  table += std::to_string(CountStarted(lives, Phase::kStarted)) + " started, " +
           std::to_string(CountStarted(lives, Phase::kInitFailed)) + " failed in Init, " +
           std::to_string(CountStarted(lives, Phase::kNotLoaded)) + " not loaded\n";
  return table;
}
