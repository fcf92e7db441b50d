#include <atomic>
#include <thread>
#include <vector>

#include "tests/contract/LoaderTest.h"
#include "tests/support/TimeLimit.h"

namespace {

using Loader = LoaderTest;

TEST_F(Loader, FindsBothEntriesOfAPlugin) {
  const HMODULE library = Load(subject->AddLibrary("a.server"));
  ASSERT_NE(nullptr, library);
  const Entry init = Find(library, "Init");
  const Entry uninit = Find(library, "UnInit");
  ASSERT_TRUE(init != nullptr && uninit != nullptr);
  EXPECT_TRUE(init());
  EXPECT_TRUE(uninit());
  EXPECT_NE(0, FreeLibrary(library));
}

TEST_F(Loader, FindsNothingUnderAnotherName) {
  const HMODULE library = Load(subject->AddLibrary("a"));
  EXPECT_EQ(nullptr, Find(library, "Uninit"));
  EXPECT_EQ(DWORD{ERROR_PROC_NOT_FOUND}, GetLastError());
  FreeLibrary(library);
}

TEST_F(Loader, GivesOneHandleForOneLibrary) {
  const std::string path = subject->AddLibrary("a");
  const HMODULE first = Load(path);
  const HMODULE second = Load(path);
  EXPECT_EQ(first, second);
  EXPECT_NE(0, FreeLibrary(second));
  EXPECT_NE(0, FreeLibrary(first));
}

TEST_F(Loader, KeepsALibraryMappedUntilItsLastHandle) {
  const std::string path = subject->AddLibrary("a");
  const HMODULE first = Load(path);
  EXPECT_TRUE(Find(first, "Init")());
  const HMODULE second = Load(path);
  FreeLibrary(first);
  EXPECT_FALSE(Find(second, "Init")());
  FreeLibrary(second);
  const HMODULE third = Load(path);
  EXPECT_TRUE(Find(third, "Init")());
  FreeLibrary(third);
}

TEST_F(Loader, KeepsLibrariesApart) {
  const HMODULE one = Load(subject->AddLibrary("a"));
  const HMODULE other = Load(subject->AddLibrary("b"));
  EXPECT_NE(one, other);
  EXPECT_TRUE(Find(one, "Init")());
  EXPECT_TRUE(Find(other, "Init")());
  FreeLibrary(one);
  FreeLibrary(other);
}

TEST_F(Loader, DoesNotFindWhatIsMissing) {
  EXPECT_EQ(DWORD{ERROR_MOD_NOT_FOUND}, Refusal(subject->PathOf("none")));
}

TEST_F(Loader, RefusesWhatIsNoLibrary) {
  EXPECT_EQ(DWORD{ERROR_BAD_EXE_FORMAT}, Refusal(subject->AddText("a")));
}

TEST_F(Loader, KeepsEachThreadsReason) {
  const HMODULE library = Load(subject->AddLibrary("a"));
  const std::string missing = subject->PathOf("none");
  // The loader waits without a system call, which may set the error on Windows.
  std::atomic<int> step{0};
  DWORD loadError = 0;
  std::thread loader([&] {
    Load(missing);
    step = 1;
    while (step != 2) {
    }
    loadError = GetLastError();
  });
  AwaitThat("the loader does not return", [&] { return step == 1; });
  Find(library, "Uninit");
  step = 2;
  const DWORD findError = GetLastError();
  loader.join();
  EXPECT_EQ(DWORD{ERROR_MOD_NOT_FOUND}, loadError);
  EXPECT_EQ(DWORD{ERROR_PROC_NOT_FOUND}, findError);
  FreeLibrary(library);
}

TEST_F(Loader, ServesManyThreadsAtOnce) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 50;
  const std::string path = subject->AddLibrary("a");
  std::atomic<int> calls{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; ++round) {
        const HMODULE library = Load(path);
        calls += Find(library, "UnInit")() ? 1 : 0;
        FreeLibrary(library);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(kThreads * kRounds, calls);
  const HMODULE last = Load(path);
  EXPECT_TRUE(Find(last, "Init")());
  EXPECT_NE(0, FreeLibrary(last));
}

}  // namespace
