#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "tests/support/TemporaryFolder.h"

/// A named pipe that is open for reading, but that nobody reads.
class UnreadPipe {
 public:
  UnreadPipe() : m_name(m_folder / "pipe") {
    EXPECT_EQ(0, mkfifo(m_name.c_str(), 0600));
    m_open = open(m_name.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  }
  ~UnreadPipe() { Close(); }
  UnreadPipe(const UnreadPipe&) = delete;
  UnreadPipe& operator=(const UnreadPipe&) = delete;

  const std::string& Name() const { return m_name; }

  void Fill() {
    const std::string page(4096, 'x');
    while (write(m_open, page.data(), page.size()) > 0) {
    }
  }

  /// Closes the reading end: nobody can read what is written any more.
  void Close() {
    if (m_open != -1) close(m_open);
    m_open = -1;
  }

 private:
  TemporaryFolder m_folder;
  std::string m_name;
  int m_open = -1;
};
