#include "host/StartDelays.h"

#include <algorithm>
#include <charconv>
#include <map>

#include "workbench/output/Text.h"
#include "workbench/shake/StartShuffle.h"

using std::chrono::milliseconds;

void StartDelays::Wait(const std::string& plugin) {
  if (!m_delayOf) return;
  const std::chrono::milliseconds delay = m_delayOf(plugin);
  std::unique_lock<std::mutex> lock(m_mutex);
  if (!m_first) m_first = std::chrono::steady_clock::now();
  m_ends.wait_until(lock, *m_first + delay, [this] { return m_ended; });
}

void StartDelays::End() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_ended = true;
  m_ends.notify_all();
}

std::optional<std::pair<std::string, milliseconds>> ParsePluginDelay(const std::string& text) {
  constexpr int longest = 3'600'000;
  const std::size_t sign = text.rfind('=');
  if (sign == std::string::npos) return std::nullopt;
  int delay = 0;
  const char* const end = text.data() + text.size();
  const auto [read, error] = std::from_chars(text.data() + sign + 1, end, delay);
  const bool isGood = error == std::errc() && read == end && delay >= 0 && delay <= longest;
  if (!isGood) return std::nullopt;
  return std::pair(text.substr(0, sign), milliseconds(delay));
}

StartDelays::DelayOf DelaysOf(const DelayOptions& options) {
  if (!options.shuffle && options.plugins.empty()) return {};
  std::map<std::string, milliseconds> delays;
  for (const std::string& text : options.plugins) {
    if (auto delay = ParsePluginDelay(text)) delays.insert_or_assign(delay->first, delay->second);
  }
  return [delays, seed = options.shuffle, over = options.shuffleOver](const std::string& plugin) {
    const auto own = delays.find(plugin);
    if (own != delays.end()) return own->second;
    return milliseconds(seed ? ShuffledDelay(static_cast<std::uint64_t>(*seed), plugin, over) : 0);
  };
}

std::string DelaysText(const DelayOptions& options) {
  std::string asked;
  if (options.shuffle) {
    asked = "--shuffle " + std::to_string(*options.shuffle) + " over " +
            std::to_string(options.shuffleOver) + " ms";
  }
  for (const std::string& delay : options.plugins) {
    asked += (asked.empty() ? "--delay " : ", --delay ") + Escaped(delay);
  }
  if (asked.empty()) return asked;
  return "the plugins' starts are delayed (" + asked +
         "): order and times of this start are not those of an ordinary one";
}

std::vector<std::string> UnknownDelayed(const DelayOptions& options,
                                        const std::vector<PluginHead>& plugins) {
  std::vector<std::string> unknown;
  for (const std::string& text : options.plugins) {
    const auto delay = ParsePluginDelay(text);
    const auto isIt = [&](const PluginHead& plugin) {
      const bool isStarted = plugin.kind != "executable" && plugin.kind != "driver";
      return isStarted && delay && plugin.id == delay->first;
    };
    if (delay && std::none_of(plugins.begin(), plugins.end(), isIt))
      unknown.push_back(delay->first);
  }
  return unknown;
}
