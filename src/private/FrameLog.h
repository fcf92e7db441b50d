#pragma once

#include <cstddef>
#include <cstdint>

#include "sdk/base/log.h"

// The frame's log lines. A function that logs has its name in kLogFunction, for example:
//
//   FRAME_LOG_AS("PluginFrame::CPluginManager::Start");
//   FRAME_LOG(kProgress, "[PluginManager start]Plugins init end. Total cost time [%d]ms.", cost);
//
// which writes "[function][PluginManager start]...[source file(line)]" under the frame's module.
// The compiler checks the text's arguments.

enum FrameLogLevel : int {
  kProgress = 3,   // progress and timings
  kTolerated = 4,  // a failure that changes nothing else
  kFailure = 5,    // one plugin or one entry failed
  kFatal = 6       // the frame cannot go on
};

namespace PluginFrame {

constexpr char kLogModule[] = "platform.PluginFrame";

/// A source file's path as the log shows it: from the last folder "src" on, with backslashes, so
/// that it is the same on every system and in every folder.
template <std::size_t N>
class LogSource {
 public:
  constexpr explicit LogSource(const char (&file)[N]) : m_text() {
    constexpr char root[] = "src";
    std::size_t start = 0;
    for (std::size_t i = 0; i + sizeof(root) < N; ++i) {
      const bool named = file[i] == root[0] && file[i + 1] == root[1] && file[i + 2] == root[2];
      const bool whole = IsSeparator(file[i + 3]) && (i == 0 || IsSeparator(file[i - 1]));
      if (named && whole) start = i;
    }
    std::size_t length = 0;
    for (const char c : {'.', '.', '\\', '.', '.', '\\'}) m_text[length++] = c;
    for (std::size_t i = start; i + 1 < N; ++i) {
      m_text[length++] = IsSeparator(file[i]) ? '\\' : file[i];
    }
  }

  constexpr const char* c_str() const { return m_text; }

 private:
  static constexpr bool IsSeparator(char c) { return c == '/' || c == '\\'; }

  char m_text[N + 6];
};

/// Milliseconds from one tick to a later one, as log lines and timing tables show them.
inline std::int32_t Elapsed(std::uint64_t from, std::uint64_t to) {
  return static_cast<std::int32_t>(to - from);
}

}  // namespace PluginFrame

/// Names the function in whose name the rest of the scope logs.
#define FRAME_LOG_AS(function) static constexpr char kLogFunction[] = function

/// One line of the frame's own module: level, text, arguments of the text.
#define FRAME_LOG(level, ...) FRAME_LOG_MODULE(::PluginFrame::kLogModule, level, __VA_ARGS__)

/// The same for another module.
#define FRAME_LOG_MODULE(module, level, ...)                                 \
  do {                                                                       \
    static constexpr ::PluginFrame::LogSource logSource(__FILE__);           \
    FRAME_LOG_LINE(module, level, __VA_ARGS__, logSource.c_str(), __LINE__); \
  } while (false)

#define FRAME_LOG_LINE(module, level, text, ...) \
  IKPXFormatLog(level, module, "[%s]" text "[%s(%d)]", kLogFunction, __VA_ARGS__)
