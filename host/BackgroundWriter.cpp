#include "host/BackgroundWriter.h"

#include <thread>
#include <utility>

#include "reference/os/Threads.h"

BackgroundWriter::BackgroundWriter(const char* thread, WriteFn write) : m_write(std::move(write)) {
  std::thread([this, thread] { Run(thread); }).detach();
}

void BackgroundWriter::Write(const std::string& text) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_error.empty()) return;
    m_waiting += text;
  }
  m_changed.notify_all();
}

void BackgroundWriter::Flush(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  const bool over = m_changed.wait_for(
      lock, limit, [this] { return !m_error.empty() || (m_waiting.empty() && !m_writing); });
  if (!over) m_error = "nobody reads it";
}

bool BackgroundWriter::IsBehind() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return !m_waiting.empty();
}

std::string BackgroundWriter::Error() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_error;
}

void BackgroundWriter::Run(const char* thread) {
  NameThread(thread);
  std::unique_lock<std::mutex> lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return !m_waiting.empty(); });
    const std::string text = std::exchange(m_waiting, std::string());
    m_writing = true;
    lock.unlock();
    const std::string error = m_write(text);
    lock.lock();
    m_writing = false;
    if (m_error.empty()) m_error = error;
    m_changed.notify_all();
  }
}
