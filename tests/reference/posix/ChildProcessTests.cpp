#include "reference/os/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/TemporaryFolder.h"

namespace {

TEST(KilledChildProcess, EndsAtOnce) {
  ChildSettings settings;
  settings.program = TEV_REFERENCE_CHILD;
  settings.arguments = {"until-stopped"};
  ChildProcess child(settings);
  child.Kill();
  EXPECT_EQ((ChildEnd{true, SIGKILL}), child.WaitFor(std::chrono::minutes(1)));
}

constexpr std::chrono::minutes kLimit{1};

TEST(ChildProcessThatFaults, EndsWithTheSignal) {
  ChildSettings settings;
  settings.program = TEV_REFERENCE_CHILD;
  settings.arguments = {"fault"};
  const std::optional<ChildEnd> end = ChildProcess(settings).WaitFor(kLimit);
  EXPECT_EQ((ChildEnd{true, SIGSEGV}), end);
}

/// A child whose standard output is a pipe that the test reads.
class AskedChild : public testing::Test {
 protected:
  AskedChild() {
    const std::string pipe = m_folder / "pipe";
    mkfifo(pipe.c_str(), 0600);
    m_readEnd = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    fcntl(m_readEnd, F_SETFL, 0);  // from now on a read waits for the child
    m_settings.program = TEV_REFERENCE_CHILD;
    m_settings.arguments = {"until-stopped"};
    m_settings.output = pipe;
  }
  ~AskedChild() override { close(m_readEnd); }

  std::string ReadWord() const {
    char word[6] = {};
    const ssize_t length = read(m_readEnd, word, 5);
    return std::string(word, static_cast<std::size_t>(length < 0 ? 0 : length));
  }

  TemporaryFolder m_folder;
  ChildSettings m_settings;
  int m_readEnd = -1;
};

TEST_F(AskedChild, EndsInOrder) {
  ChildProcess child(m_settings);
  EXPECT_EQ("ready", ReadWord());
  EXPECT_TRUE(child.RequestStop());
  EXPECT_EQ((ChildEnd{false, 7}), child.WaitFor(kLimit));
}

TEST_F(AskedChild, IsInAGroupOfItsOwn) {
  ChildProcess child(m_settings);
  EXPECT_EQ(static_cast<pid_t>(child.Id()), getpgid(static_cast<pid_t>(child.Id())));
  EXPECT_NE(getpgrp(), getpgid(static_cast<pid_t>(child.Id())));
}

TEST_F(AskedChild, IsKilledByTheDestructor) {
  pid_t process = 0;
  {
    const ChildProcess child(m_settings);
    process = static_cast<pid_t>(child.Id());
  }
  EXPECT_EQ(-1, kill(process, 0));
}

}  // namespace
