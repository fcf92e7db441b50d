#include "host/Output.h"

#include <thread>
#include <utility>

#include "reference/os/Threads.h"

Output::Output() {
  std::thread([this] { Run(); }).detach();
}

void Output::Write(const std::string& text) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_error.empty()) return;
    m_waiting += text;
  }
  m_changed.notify_all();
}

void Output::Flush(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  const bool written =
      m_changed.wait_for(lock, limit, [this] { return m_waiting.empty() && !m_writing; });
  if (!written && m_error.empty()) m_error = "nobody reads it";
}

std::string Output::Error() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_error;
}

void Output::Run() {
  NameThread("output");
  std::unique_lock<std::mutex> lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return !m_waiting.empty(); });
    const std::string text = std::exchange(m_waiting, std::string());
    m_writing = true;
    lock.unlock();
    const bool written = m_output.Write(text);
    lock.lock();
    m_writing = false;
    if (!written && m_error.empty()) m_error = m_output.Error();
    m_changed.notify_all();
  }
}
