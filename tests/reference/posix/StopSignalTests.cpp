#include "reference/os/StopSignal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/posix/WaitUntilAsleep.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLong{20000};

std::string Next(StopSignal& stop, milliseconds limit) {
  const std::optional<StopRequest> request = stop.WaitFor(limit);
  return request ? Name(*request) : "none";
}

/// The names of the requests that StopSignal does not receive any more.
std::string DisplacedOf(const StopSignal& stop) {
  std::string names;
  for (const StopRequest request : stop.Displaced()) names += Name(request) + std::string(" ");
  return names;
}

/// Forks a child that runs `action`. Returns its exit status, or minus the signal that ended it.
template <typename Action>
int InChild(Action action) {
  const pid_t child = fork();
  if (child == 0) {
    action();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

TEST(StopSignal, RequestsThatCameBeforeTheWaitAreReturnedOnceEach) {
  StopSignal stop;
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
  for (const int signal : {SIGINT, SIGTERM, SIGTERM, SIGHUP}) raise(signal);
  EXPECT_EQ("SIGINT", Next(stop, kLong));
  EXPECT_EQ("SIGTERM", Next(stop, kLong));
  EXPECT_EQ("SIGTERM", Next(stop, kLong));
  EXPECT_EQ("SIGHUP", Next(stop, kLong));
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
}

TEST(StopSignal, RequestEndsAWaitThoughOtherThreadsRun) {
  StopSignal stop;
  std::thread other([waiter = getpid()] {
    WaitUntilAsleep(waiter);
    kill(getpid(), SIGTERM);
  });
  EXPECT_EQ("SIGTERM", Next(stop, kLong));
  other.join();
}

TEST(StopSignal, WaitWithoutARequestTakesItsTime) {
  StopSignal stop;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ("none", Next(stop, milliseconds(15)));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(15));
}

TEST(StopSignal, WakeKeepsTheRequestsBehindIt) {
  StopSignal stop;
  stop.Wake();
  raise(SIGTERM);
  stop.Wake();
  EXPECT_EQ("none", Next(stop, kLong));
  EXPECT_EQ("SIGTERM", Next(stop, kLong));
}

TEST(StopSignal, EachOfTwoWaitersGetsOneOfTwoRequests) {
  StopSignal stop;
  std::vector<std::string> got(2);
  std::thread first([&] { got[0] = Next(stop, kLong); });
  std::thread second([&] { got[1] = Next(stop, kLong); });
  kill(getpid(), SIGINT);
  kill(getpid(), SIGINT);
  first.join();
  second.join();
  EXPECT_EQ(std::vector<std::string>({"SIGINT", "SIGINT"}), got);
}

TEST(StopSignal, WorksThoughTheSignalsWereBlockedAtTheStart) {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
  StopSignal stop;
  raise(SIGTERM);
  EXPECT_EQ("SIGTERM", Next(stop, kLong));
}

TEST(StopSignal, RequestIsDisplacedWhileOtherCodeHandlesOrIgnoresItsSignal) {
  signal(SIGHUP, SIG_DFL);  // the tests may have been started with it ignored
  StopSignal stop;
  EXPECT_EQ("", DisplacedOf(stop));
  signal(SIGTERM, SIG_IGN);
  EXPECT_EQ("SIGTERM ", DisplacedOf(stop));
  signal(SIGINT, SIG_DFL);
  signal(SIGHUP, [](int) {});
  EXPECT_EQ("SIGINT SIGTERM SIGHUP ", DisplacedOf(stop));
  StopSignal again;
  EXPECT_EQ("", DisplacedOf(again));
}

TEST(StopSignal, IgnoredHangUpStaysIgnoredAndIsNotDisplaced) {
  signal(SIGHUP, SIG_IGN);
  StopSignal stop;
  raise(SIGHUP);
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
  EXPECT_EQ("", DisplacedOf(stop));
  signal(SIGHUP, SIG_DFL);
}

TEST(StopSignal, BrokenPipeAndFullFileAreErrorsOfTheWrite) {
  StopSignal stop;
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  close(ends[0]);
  EXPECT_EQ(-1, write(ends[1], "x", 1));
  EXPECT_EQ(EPIPE, errno);
  close(ends[1]);

  const TemporaryFolder folder;
  const int file = open((folder / "file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const rlimit none = {0, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &none);
  const ssize_t written = write(file, "x", 1);
  const int error = errno;
  const rlimit any = {RLIM_INFINITY, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &any);
  EXPECT_EQ(-1, written);
  EXPECT_EQ(EFBIG, error);
  close(file);
}

TEST(StopSignal, ForkedChildIsEndedByTheSignalAndItsParentIsNotAsked) {
  StopSignal stop;
  EXPECT_EQ(-SIGTERM, InChild([] { raise(SIGTERM); }));
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
}

TEST(StopSignal, ExecutedChildStartsWithTheDefaultActions) {
  StopSignal stop;
  for (const char* name : {"INT", "TERM", "HUP", "PIPE"}) {
    const std::string command = "kill -" + std::string(name) + " $$";
    EXPECT_LT(InChild([&] { execl("/bin/sh", "sh", "-c", command.c_str(), nullptr); }), 0) << name;
  }
  EXPECT_EQ("none", Next(stop, milliseconds(0)));
}

}  // namespace
