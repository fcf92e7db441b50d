#include "host/FrameDriver.h"

#include <utility>

#include "reference/os/Threads.h"

FrameDriver::FrameDriver(std::function<void()> onEnd)
    : m_onEnd(std::move(onEnd)), m_thread([this] { Run(); }) {}

FrameDriver::~FrameDriver() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ending = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void FrameDriver::Begin(std::function<void()> call) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push(std::move(call));
  }
  m_changed.notify_all();
}

bool FrameDriver::WaitForEnd(std::chrono::milliseconds limit) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, limit, [this] { return m_calls.empty(); });
}

void FrameDriver::Run() {
  NameThread("frame");
  std::unique_lock<std::mutex> lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_ending || !m_calls.empty(); });
    if (m_calls.empty()) return;
    const std::function<void()>& call = m_calls.front();
    lock.unlock();
    call();
    lock.lock();
    m_calls.pop();
    m_changed.notify_all();
    lock.unlock();
    m_onEnd();
    lock.lock();
  }
}
