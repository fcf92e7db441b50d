#include "host/PluginLives.h"

#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

/// The frame's own text of a line: without the function before it and the source behind it.
std::string Body(const std::string& text) {
  const std::size_t begin = text.find(']');
  const std::size_t end = text.rfind('[');
  if (begin == std::string::npos || end == std::string::npos || end <= begin) return text;
  return text.substr(begin + 1, end - begin - 1);
}

/// What stands between `prefix`, at the text's begin, and the last `suffix`.
std::optional<std::string> Between(const std::string& text, const char* prefix,
                                   const char* suffix) {
  const std::size_t begin = std::strlen(prefix);
  if (text.compare(0, begin, prefix) != 0) return std::nullopt;
  const std::size_t end = text.rfind(suffix);
  if (end == std::string::npos || end < begin) return std::nullopt;
  return text.substr(begin, end - begin);
}

/// The number behind the last "[".
std::int32_t LastNumber(const std::string& text) {
  const std::size_t begin = text.rfind('[');
  return begin == std::string::npos ? -1 : std::atoi(text.c_str() + begin + 1);
}

/// What the loader's error code says of the library, where the loader has no words of its own.
std::string LoadErrorInWords(const std::string& code) {
  static const std::map<std::string, std::string> words = {
      {"5", "may not be read"},
      {"126", "is missing, or a library that it needs is"},
      {"127", "needs a symbol that no library offers"},
      {"193", "is no library for this machine"}};
  const auto found = words.find(code);
  return found == words.end() ? "cannot be loaded" : found->second;
}

}  // namespace

void PluginLives::Expect(const std::string& name) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  Life(name);
}

std::vector<PluginLife> PluginLives::Snapshot() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_lives;
}

PluginLife& PluginLives::Life(const std::string& name) {
  const auto position = m_positions.emplace(name, m_lives.size());
  if (position.second) {
    m_lives.emplace_back();
    m_lives.back().name = name;
    m_lives.back().since = std::chrono::steady_clock::now();
  }
  return m_lives[position.first->second];
}

void PluginLives::Enter(const std::string& name, PluginLife::Phase phase) {
  PluginLife& life = Life(name);
  life.phase = phase;
  life.since = std::chrono::steady_clock::now();
}

void PluginLives::OnLogLine(int level, const std::string& module, const std::string& text) {
  using Phase = PluginLife::Phase;
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::string& current = m_onThread[std::this_thread::get_id()];
  if (module == "platform.os") {
    // "path: the loader's own message", while a plugin is loaded; the path is known from its name.
    const std::size_t message = text.find(": ");
    if (!current.empty() && message != std::string::npos) {
      Life(current).reason = text.substr(message + 2);
    }
    return;
  }
  if (module != "platform.PluginFrame") return;

  const std::string body = Body(text);
  if (const auto name = Between(body, "[Plugin Load]Plugin [", "] SinglePluginLoad Begin.")) {
    current = *name;
    Life(current);
  } else if (const auto begun = Between(body, "[Plugin Load]Plugin Init begin.[", "]")) {
    Enter(*begun, Phase::kInInit);
  } else if (const auto well = Between(body, "[Plugin Load]Plugin Init end. [", "] cost time [")) {
    Enter(*well, Phase::kStarted);
    Life(*well).started = Phase::kStarted;
    Life(*well).startMs = LastNumber(body);
  } else if (const auto badly =
                 Between(body, "[Plugin Load]Plugin Init end (failed). [", "] cost time [")) {
    Enter(*badly, Phase::kInitFailed);
    PluginLife& life = Life(*badly);
    life.started = Phase::kInitFailed;
    life.startMs = LastNumber(body);
    if (life.reason.empty()) life.reason = "its Init returned false";
  } else if (const auto missing =
                 Between(body, "[Plugin Load]Plugin ", " load failed, InitFailed, count[")) {
    Enter(*missing, Phase::kNotLoaded);
    Life(*missing).started = Phase::kNotLoaded;
  } else if (const auto what = Between(body, "[Plugin]Init threw [", "]")) {
    if (!current.empty()) Life(current).reason = "its Init threw: " + *what;
  } else if (body == "[Plugin]Get dynamic library Init symbol failed.") {
    if (!current.empty()) Life(current).reason = "its library exports no Init";
  } else if (const auto path =
                 Between(body, "[Plugin]Get dynamic library handle failed.path= ", ",errorcode=")) {
    PluginLife& life = Life(current);
    if (life.reason.empty()) {
      const std::string code = body.substr(body.rfind('=') + 1);
      life.reason = *path + " " + LoadErrorInWords(code) + " (error " + code + ")";
    }
  } else if (const auto stopping = Between(body, "[Plugin Unload]Plugin UnInit begin.[", "]")) {
    Enter(*stopping, Phase::kInUnInit);
  } else if (const auto ended =
                 Between(body, "[Plugin Unload]Plugin UnInit end. [", "] cost time [")) {
    Life(*ended).stopMs = LastNumber(body);
  } else if (const auto stopped =
                 Between(body, "[Plugin Unload]Plugin [", "] SinglePluginUnload End. count[")) {
    Enter(*stopped, level < 5 ? Phase::kStopped : Phase::kStopRefused);
  }
}
