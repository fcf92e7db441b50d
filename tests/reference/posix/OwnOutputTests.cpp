#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "reference/os/StopSignal.h"
#include "reference/os/Terminal.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// Runs owns_output in a child process whose descriptors `prepare` has changed. Returns what it
/// wrote to standard error.
std::string ErrorsOf(
    const std::string& way, const std::function<void()>& prepare,
    const std::function<void()>& whileItRuns = [] {}) {
  const TemporaryFolder folder;
  const std::string errors = folder.Write("errors", "");
  const pid_t child = fork();
  if (child == 0) {
    dup2(open(errors.c_str(), O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    prepare();
    execl(TEV_OWNS_OUTPUT, TEV_OWNS_OUTPUT, way.c_str(), nullptr);
    _exit(127);
  }
  whileItRuns();
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
  return folder.Read("errors");
}

void SendOutputTo(const char* file) {
  dup2(open(file, O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
}

TEST(OwnOutput, ClosedOutputFailsAtTheFirstWrite) {
  EXPECT_EQ("failed, failed, failed, Bad file descriptor\n",
            ErrorsOf("thrice", [] { close(STDOUT_FILENO); }));
}

TEST(OwnOutput, ClosedOutputIsNoTerminal) {
  EXPECT_EQ("file 80\n", ErrorsOf("ask", [] { close(STDOUT_FILENO); }));
}

TEST(OwnOutput, FullFileSystemFailsForGood) {
  EXPECT_EQ("failed, failed, failed, No space left on device\n",
            ErrorsOf("thrice", [] { SendOutputTo("/dev/full"); }));
}

TEST(OwnOutput, StaysFailedWhenItCouldBeWrittenAgain) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("output", "");
  const pid_t child = fork();
  if (child == 0) {
    SendOutputTo(file.c_str());
    OwnOutput output;
    const StopSignal stop;  // with it, a write beyond the limit fails with an error
    rlimit limit = {0, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    const bool first = output.Write("first");
    limit.rlim_cur = RLIM_INFINITY;
    setrlimit(RLIMIT_FSIZE, &limit);
    const bool second = output.Write("second");
    _exit(!first && !second && output.Error() == "File too large" ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
  EXPECT_EQ("", folder.Read("output"));
}

TEST(OwnOutput, BrokenPipeFailsForGood) {
  EXPECT_EQ("failed, failed, failed, Broken pipe\n", ErrorsOf("thrice", [] {
              int ends[2];
              if (pipe2(ends, O_CLOEXEC) != 0) _exit(1);
              dup2(ends[1], STDOUT_FILENO);
            }));
}

TEST(OwnOutput, ClosedDescriptorsLeadToTheNullDevice) {
  EXPECT_EQ("", ErrorsOf("null", [] {
              for (const int descriptor : {0, 1, 2}) close(descriptor);
            }));
}

TEST(OwnOutput, ChildrenInheritNothingButStandardError) {
  const TemporaryFolder folder;
  const std::string output = folder.Write("output", "");
  EXPECT_EQ("own is closed\n", ErrorsOf("inherited", [&] { SendOutputTo(output.c_str()); }));
  EXPECT_EQ("", folder.Read("output"));
}

TEST(OwnOutput, PipeThatDoesNotBlockGetsTheWholeText) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
  std::size_t received = 0;
  ErrorsOf(
      "long", [&] { dup2(ends[1], STDOUT_FILENO); },
      [&] {
        close(ends[1]);
        char text[4096];
        pollfd ready = {ends[0], POLLIN, 0};
        while (poll(&ready, 1, 20000) == 1) {
          const ssize_t count = read(ends[0], text, sizeof(text));
          if (count <= 0) break;
          received += static_cast<std::size_t>(count);
        }
      });
  close(ends[0]);
  EXPECT_EQ(300000U, received);
}

TEST(OwnOutput, TerminalHasItsPresentWidth) {
  int ends[2];
  winsize size = {};
  size.ws_col = 132;
  ASSERT_EQ(0, openpty(&ends[0], &ends[1], nullptr, nullptr, &size));
  EXPECT_EQ("terminal 132\n", ErrorsOf("ask", [&] { dup2(ends[1], STDOUT_FILENO); }));
  size.ws_col = 0;
  ioctl(ends[0], TIOCSWINSZ, &size);
  EXPECT_EQ("terminal 80\n", ErrorsOf("ask", [&] { dup2(ends[1], STDOUT_FILENO); }));
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
