// Information from the system on the process, its threads and its user.

#include <gtest/gtest.h>
#include <pthread.h>
#include <pwd.h>
#include <sched.h>
#include <signal.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <thread>

#include "reference/os/ProcessInfo.h"
#include "reference/os/Threads.h"
#include "reference/os/UserFolders.h"

namespace {

std::string NameOfThisThread() {
  char name[16] = {};
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return name;
}

/// The system's name of a thread that was named `name`.
std::string Named(const std::string& name) {
  std::string result;
  std::thread([&] {
    NameThread(name);
    result = NameOfThisThread();
  }).join();
  return result;
}

stack_t AlternateStack() {
  stack_t stack = {};
  sigaltstack(nullptr, &stack);
  return stack;
}

bool HasAlternateStack() {
  constexpr std::size_t least = std::size_t{256} * 1024;
  const stack_t stack = AlternateStack();
  return (stack.ss_flags & SS_DISABLE) == 0 && stack.ss_size >= least;
}

TEST(ThreadName, IsCutToFifteenBytesBetweenCharacters) {
  EXPECT_EQ("", Named(""));
  EXPECT_EQ("123456789012345", Named("123456789012345"));
  EXPECT_EQ("123456789012345", Named("1234567890123456"));
  EXPECT_EQ("12345678901234", Named("12345678901234\xc3\xa9"));
  EXPECT_EQ("1234567890123\xc3\xa9", Named("1234567890123\xc3\xa9-"));
  EXPECT_EQ("123456789012", Named("123456789012\xf0\x9f\x99\x82"));
}

TEST(ThreadNumber, IsTheSystems) {
  EXPECT_EQ(static_cast<std::uint64_t>(getpid()), ThreadNumber());
  std::thread([] { EXPECT_EQ(static_cast<std::uint64_t>(gettid()), ThreadNumber()); }).join();
}

/// Whether a thread has an alternate signal stack when everything that it owns has been freed.
struct AtTheEnd {
  pthread_key_t key{};
  int rounds = 2;  // of freeing the thread's values, in no given order: all others are gone by then
  bool hasStack = false;
};

TEST(WorkerThread, ItsAlternateStackIsNotUsedAfterItWasFreed) {
  const bool before = HasAlternateStack();
  AtTheEnd end;
  end.hasStack = !before;
  ASSERT_EQ(0, pthread_key_create(&end.key, [](void* value) {
              AtTheEnd& state = *static_cast<AtTheEnd*>(value);
              if (--state.rounds > 0) {
                pthread_setspecific(state.key, &state);
              } else {
                state.hasStack = HasAlternateStack();
              }
            }));
  std::thread([&] {
    pthread_setspecific(end.key, &end);
    PrepareWorkerThread();
  }).join();
  pthread_key_delete(end.key);
  EXPECT_EQ(0, end.rounds);
  EXPECT_EQ(before, end.hasStack);
}

TEST(WorkerThread, HasAnEmptyMaskAndAnAlternateStackOfItsOwn) {
  std::thread([] {
    sigset_t mask;
    sigfillset(&mask);
    pthread_sigmask(SIG_SETMASK, &mask, nullptr);
    PrepareWorkerThread();
    PrepareWorkerThread();
    EXPECT_TRUE(HasAlternateStack());
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(1, sigisemptyset(&mask));
    const void* stack = AlternateStack().ss_sp;
    std::thread([stack] {
      PrepareWorkerThread();
      EXPECT_TRUE(HasAlternateStack());
      EXPECT_NE(stack, AlternateStack().ss_sp);
    }).join();
  }).join();
}

TEST(ProcessInfo, IsTheSystems) {
  EXPECT_EQ(static_cast<std::uint64_t>(getpid()), ProcessNumber());
  utsname system = {};
  uname(&system);
  EXPECT_EQ(system.nodename, HostName());
}

TEST(UsableCores, AreThoseThatTheProcessMayUse) {
  cpu_set_t cores;
  ASSERT_EQ(0, sched_getaffinity(0, sizeof(cores), &cores));
  EXPECT_EQ(CPU_COUNT(&cores), UsableCores());
  int first = 0;
  while (!CPU_ISSET(first, &cores)) ++first;
  CPU_ZERO(&cores);
  CPU_SET(first, &cores);
  std::thread([&] {
    ASSERT_EQ(0, sched_setaffinity(0, sizeof(cores), &cores));
    EXPECT_EQ(1, UsableCores());
  }).join();
}

TEST(UserStateFolder, IsTheFirstThatIsAnAbsolutePath) {
  setenv("HOME", "/home/somebody", 1);
  setenv("XDG_STATE_HOME", "/state", 1);
  EXPECT_EQ("/state", UserStateFolder());
  setenv("XDG_STATE_HOME", "state", 1);
  EXPECT_EQ("/home/somebody/.local/state", UserStateFolder());
  unsetenv("XDG_STATE_HOME");
  EXPECT_EQ("/home/somebody/.local/state", UserStateFolder());
  const std::string inDatabase = std::string(getpwuid(getuid())->pw_dir) + "/.local/state";
  setenv("HOME", "", 1);
  EXPECT_EQ(inDatabase, UserStateFolder());
  unsetenv("HOME");
  EXPECT_EQ(inDatabase, UserStateFolder());
}

}  // namespace
