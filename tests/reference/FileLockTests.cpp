#include "reference/os/FileLock.h"

#include <gmock/gmock.h>

#include <string>
#include <system_error>

#include "tests/support/TemporaryFolder.h"

namespace {

TEST(FileLock, IsHeldOnceUntilItsObjectIsGone) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.Path() / "lock";
  {
    std::optional<FileLock> lock = FileLock::TryLock(file);
    ASSERT_TRUE(lock);
    EXPECT_FALSE(FileLock::TryLock(file));
    const FileLock moved = *std::move(lock);
    // NOLINTNEXTLINE(bugprone-use-after-move): what is left of it is destroyed
    lock.reset();
    EXPECT_FALSE(FileLock::TryLock(file));
  }
  EXPECT_TRUE(FileLock::TryLock(file));
}

TEST(FileLock, AssignmentReleasesTheOneBefore) {
  const TemporaryFolder folder;
  std::optional<FileLock> lock = FileLock::TryLock(folder.Path() / "first");
  lock = FileLock::TryLock(folder.Path() / "second");
  EXPECT_TRUE(FileLock::TryLock(folder.Path() / "first"));
  EXPECT_FALSE(FileLock::TryLock(folder.Path() / "second"));
}

TEST(FileLock, FolderThatIsMissingIsAnErrorWithTheFilesName) {
  const TemporaryFolder folder;
  try {
    FileLock::TryLock(folder.Path() / "none" / "lock");
    FAIL() << "no error";
  } catch (const std::system_error& error) {
    EXPECT_EQ(std::errc::no_such_file_or_directory, error.code());
    EXPECT_THAT(error.what(), testing::HasSubstr("cannot open " + (folder / "none")));
  }
}

}  // namespace
