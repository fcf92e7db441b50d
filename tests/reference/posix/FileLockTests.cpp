#include "reference/os/FileLock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace {

TEST(FileLock, EndsWithItsProcess) {
  const TemporaryFolder folder;
  const pid_t child = fork();
  if (child == 0) {
    const std::optional<FileLock> lock = FileLock::TryLock(folder.Path() / "lock");
    _exit(lock ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(0, status);
  EXPECT_TRUE(FileLock::TryLock(folder.Path() / "lock"));
}

TEST(FileLock, IsReleasedThoughAForkedChildRunsOn) {
  const TemporaryFolder folder;
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  std::optional<FileLock> lock = FileLock::TryLock(folder.Path() / "lock");
  const pid_t child = fork();
  if (child == 0) {
    close(ends[1]);
    char byte = 0;
    _exit(static_cast<int>(read(ends[0], &byte, 1)));  // until the test closes the pipe
  }
  lock.reset();
  EXPECT_TRUE(FileLock::TryLock(folder.Path() / "lock"));
  close(ends[1]);
  waitpid(child, nullptr, 0);
  close(ends[0]);
}

}  // namespace
