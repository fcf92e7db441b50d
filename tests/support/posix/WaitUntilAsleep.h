#pragma once

#include <sys/types.h>

#include <fstream>
#include <string>
#include <thread>

/// Returns once a thread of any process sleeps in the kernel. A test that sends a signal to a wait
/// calls this first: the thread sanitizer keeps back a signal that arrives between two system
/// calls, and the wait that follows does not end by it.
inline void WaitUntilAsleep(pid_t thread) {
  while (true) {
    std::ifstream file("/proc/" + std::to_string(thread) + "/stat");
    std::string line;
    if (!std::getline(file, line)) return;  // the thread has ended
    // The state follows the name, which stands in brackets and may contain some.
    const std::size_t name = line.rfind(") ");
    if (name != std::string::npos && line[name + 2] == 'S') return;
    std::this_thread::yield();
  }
}
