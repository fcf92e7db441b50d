// How many threads a post wakes, that no lock is held while a thread is created, and when threads
// end.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include "tests/reference/ThreadPoolTest.h"
#include "tests/support/Latch.h"

namespace {

/// If set, called once by a thread before it creates another one.
std::atomic<void (*)()> g_beforeThread{nullptr};

Latch* g_asked = nullptr;
Latch* g_answered = nullptr;
std::atomic<int> g_met{0};

void AskTheOtherThread() {
  g_asked->Arrive();
  if (g_answered->Wait()) ++g_met;
}

long VoluntarySwitches() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_nvcsw;
}

}  // namespace

// Replaces the C library's function in the whole program.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) {
  if (void (*const before)() = g_beforeThread.exchange(nullptr)) before();
  using Create = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, start, argument);
}

namespace {

using ThreadWaking = ThreadPool;

/// As a thread_local object, arrives at the latch when its thread ends.
class EndOfThread {
 public:
  explicit EndOfThread(std::shared_ptr<Latch> latch) : m_latch(std::move(latch)) {}
  ~EndOfThread() { m_latch->Arrive(); }
  EndOfThread(const EndOfThread&) = delete;
  EndOfThread& operator=(const EndOfThread&) = delete;

 private:
  std::shared_ptr<Latch> m_latch;
};

TEST_F(ThreadWaking, PostWakesOneOfManyIdleThreads) {
  constexpr int kThreads = 100;
  constexpr int kPosts = 200;
  ASSERT_TRUE(Grant(kThreads, kThreads));
  Latch together(kThreads);
  std::atomic<int> met{0};
  for (int i = 0; i < kThreads; ++i) Post([&] { met += together.ArriveAndWait() ? 1 : 0; });
  ASSERT_TRUE(EverythingIsDone());
  ASSERT_EQ(kThreads, met);
  const long before = VoluntarySwitches();
  for (int i = 0; i < kPosts; ++i) {
    Latch ran;
    ASSERT_TRUE(Post([&] { ran.Arrive(); }));
    ASSERT_TRUE(ran.Wait());
    ASSERT_TRUE(EverythingIsDone());
  }
  // For each post the poster and one thread may sleep several times. The other threads may count
  // once, if they had not yet gone to sleep.
  EXPECT_LT(VoluntarySwitches() - before, 2 * kThreads + 10 * kPosts);
}

TEST_F(ThreadWaking, PoolsAnswerWhileAThreadIsBeingMade) {
  Latch asked;
  Latch answered;
  g_asked = &asked;
  g_answered = &answered;
  g_met = 0;
  std::thread other([&] {
    if (!asked.Wait()) return;
    Post([] {});
    answered.Arrive();
  });
  ASSERT_TRUE(Grant(1, 2));
  Latch open;
  ASSERT_TRUE(Post([&] { open.Wait(); }));
  g_beforeThread = &AskTheOtherThread;
  ASSERT_TRUE(Post([&] { open.Wait(); }));
  other.join();
  EXPECT_EQ(1, g_met);
  open.Arrive();
  Release(true);
}

TEST_F(ThreadWaking, ThreadsThatWereIdleEndWhenTheLastTaskIsTaken) {
  constexpr int kThreads = 4;
  const auto ended = std::make_shared<Latch>(kThreads);
  ASSERT_TRUE(Grant(kThreads, kThreads, kThreads - 1));
  Latch together(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    Post(
        [&] {
          thread_local const EndOfThread end(ended);
          together.ArriveAndWait();
        },
        true);
  }
  ASSERT_TRUE(EverythingIsDone());
  // All threads but one are reserved for urgent tasks, so the second task must wait for the first.
  Latch open;
  Post([&] { open.Wait(); });
  Post([] {});
  EXPECT_TRUE(Release(false));
  open.Arrive();
  EXPECT_TRUE(ended->Wait());
}

}  // namespace
