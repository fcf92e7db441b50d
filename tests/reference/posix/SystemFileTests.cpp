#include "reference/os/SystemFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "tests/support/TemporaryFolder.h"

namespace {

constexpr int kAMinute = 60000;

/// A pipe in which nothing more has room.
class FullPipe {
 public:
  FullPipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
    const std::string page(4096, 'x');
    while (true) {
      const ssize_t count = write(m_writeEnd, page.data(), page.size());
      if (count < 0) break;
      m_size += static_cast<std::size_t>(count);
    }
  }
  ~FullPipe() {
    close(m_readEnd);
    close(m_writeEnd);
  }
  FullPipe(const FullPipe&) = delete;
  FullPipe& operator=(const FullPipe&) = delete;

  SystemFile WriteEnd() const { return m_writeEnd; }

  /// What it was filled with.
  std::string Filling() const { return std::string(m_size, 'x'); }

  void CloseWriteEnd() {
    close(m_writeEnd);
    m_writeEnd = -1;
  }

  /// Reads until the write end is closed.
  std::string ReadAll() {
    fcntl(m_readEnd, F_SETFL, 0);
    std::string text;
    char part[4096];
    while (true) {
      const ssize_t count = read(m_readEnd, part, sizeof(part));
      if (count <= 0) return text;
      text.append(part, static_cast<std::size_t>(count));
    }
  }

 private:
  int m_readEnd = -1;
  int m_writeEnd = -1;
  std::size_t m_size = 0;
};

TEST(SystemFile, MissingFileIsNotOpened) {
  const TemporaryFolder folder;
  EXPECT_EQ(kNoFile, OpenForAppending(folder / "missing"));
  EXPECT_EQ(ENOENT, errno);
}

TEST(SystemFile, EachWriteAppendsToWhatOthersHaveWritten) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("file", "old,");
  const SystemFile one = OpenForAppending(path);
  const SystemFile other = OpenForAppending(path);
  EXPECT_TRUE(WriteWhole(one, "one,", kForEver));
  EXPECT_TRUE(WriteWhole(other, "other,", kAMinute));
  EXPECT_TRUE(WriteWhole(one, "one", kForEver));
  CloseFile(one);
  CloseFile(other);
  EXPECT_EQ("old,one,other,one", folder.Read("file"));
}

TEST(SystemFile, ClosedFileIsClosed) {
  const TemporaryFolder folder;
  const SystemFile file = OpenForAppending(folder.Write("file", ""));
  CloseFile(file);
  errno = 0;
  EXPECT_FALSE(WriteWhole(file, "text", kAMinute));
  EXPECT_EQ(EBADF, errno);
}

TEST(SystemFile, ReaderThatDoesNotReadIsNotWaitedForAnyLonger) {
  const FullPipe pipe;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(WriteWhole(pipe.WriteEnd(), "text", 20));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
}

TEST(SystemFile, TextThatIsLongerThanAPipeIsWrittenWhole) {
  for (const int longestWait : {kForEver, kAMinute}) {
    FullPipe pipe;
    const std::string text(300000, 'y');
    std::thread writer([&] {
      EXPECT_TRUE(WriteWhole(pipe.WriteEnd(), text, longestWait));
      pipe.CloseWriteEnd();
    });
    const std::string received = pipe.ReadAll();
    writer.join();
    EXPECT_EQ(pipe.Filling() + text, received);
  }
}

}  // namespace
