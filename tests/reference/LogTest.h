#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "reference/base/Log.h"
#include "tests/reference/ThreadNumber.h"
#include "tests/support/TemporaryFolder.h"

inline std::vector<std::string> Lines(const std::string& content) {
  std::vector<std::string> lines;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// `lines` without their times, whose form is checked, and with T for the number of the calling
/// thread.
inline std::vector<std::string> Bare(std::vector<std::string> lines) {
  const std::string form = "0000-00-00 00:00:00.000+00:00 ";
  const std::string thread = "] [" + ThreadNumber() + "] [";
  for (std::string& line : lines) {
    std::string time = line.substr(0, form.size());
    std::replace_if(
        time.begin(), time.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
    const std::size_t sign = form.find('+');
    if (time.size() > sign && time[sign] == '-') time[sign] = '+';
    EXPECT_EQ(form, time);
    line.erase(0, form.size());
    const std::size_t number = line.find(thread);
    if (number != std::string::npos) line.replace(number, thread.size(), "] [T] [");
  }
  return lines;
}

inline bool g_logWasConfigured = false;

/// A test with the log in a new file.
class Log : public testing::Test {
 protected:
  Log() {
    g_logWasConfigured = true;
    ConfigureLog({0, m_folder / "log.txt"});
  }
  ~Log() override {
    ConfigureLog({0, ""});
    SetLogObserver({});
  }

  std::vector<std::string> Logged(const std::string& name = "log.txt") const {
    return Bare(Lines(m_folder.Read(name)));
  }

  TemporaryFolder m_folder;
};
