#include "host/FailureReason.h"

#include <filesystem>
#include <system_error>

#include "reference/os/LocalText.h"

namespace fs = std::filesystem;

namespace {

constexpr int kFatal = 6;

/// What is wrong with a file that could not be read, as far as the file itself tells.
std::string WhatIsWrong(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (status.type() == fs::file_type::not_found) return "does not exist";
  if (status.type() == fs::file_type::directory) return "is a directory";
  if (status.type() == fs::file_type::none) return "cannot be looked at: " + error.message();
  if (fs::file_size(file, error) == 0 && !error) return "is empty";
  return "cannot be read";
}

/// The argument in the last "[...]" before the line's source field.
std::string LastArgument(const std::string& text) {
  const std::size_t source = text.rfind('[');
  if (source == std::string::npos || source == 0) return std::string();
  const std::size_t end = text.rfind(']', source);
  const std::size_t marker = text.find("path[");
  if (end == std::string::npos || marker == std::string::npos || marker + 5 > end) {
    return std::string();
  }
  return text.substr(marker + 5, end - marker - 5);
}

}  // namespace

void FailureReason::OnLogLine(int level, const std::string& module, const std::string& text) {
  if (module != "platform.PluginFrame") return;
  const std::lock_guard<std::mutex> lock(m_mutex);
  // With two blanks: the files that the product cannot do without. Addons' and tools' have one.
  if (text.find("]ReadFile  failed ") != std::string::npos) {
    m_unreadable.push_back(LastArgument(text));
  } else if (level >= kFatal && m_lastFatal.empty()) {
    m_lastFatal = text;
  }
}

std::string FailureReason::Sentence() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_unreadable.empty()) {
    return m_lastFatal.empty() ? "the frame failed and logged no reason"
                               : "the frame failed: " + m_lastFatal;
  }
  const fs::path file = PathFromLocal(m_unreadable.front());
  std::string sentence = LocalFromPath(file.lexically_normal()) + " " + WhatIsWrong(file) +
                         ", and there is no " + LocalFromPath(file.stem()) +
                         ".data beside it that could stand in; the product cannot be read";
  if (m_unreadable.size() > 1) {
    sentence += " (nor can " + std::to_string(m_unreadable.size() - 1) + " more files)";
  }
  return sentence;
}
