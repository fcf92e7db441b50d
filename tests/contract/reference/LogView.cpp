#include "tests/contract/libraries/LogView.h"

#include "reference/base/Log.h"

LogView::LogView() {
  ConfigureLog({0, ""});
  SetLogObserver([this](int level, const std::string& module, const std::string& text) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lines.push_back(std::to_string(level) + " " + module + " " + text);
  });
}

LogView::~LogView() {
  SetLogObserver({});
}

std::optional<std::vector<std::string>> LogView::Lines() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_lines;
}
