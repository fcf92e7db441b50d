// Records where the disk is full, as this system can show it.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "tests/support/TemporaryFolder.h"
#include "workbench/record/FlightRecord.h"

namespace {

/// Bounds the size of every file that this process writes, until it is destroyed.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : m_oldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &m_old);
    rlimit limit = m_old;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &m_old);
    std::signal(SIGXFSZ, m_oldHandler);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*m_oldHandler)(int);
  rlimit m_old{};
};

TEST(FullDisk, LosesLinesThatAreCounted) {
  RecordWriter writer("/dev/full");
  writer.WriteLine("one");
  writer.WriteLine("two");
  EXPECT_EQ(2U, writer.LostLines());
}

TEST(FullDisk, LetsTheNextLineBeginOnALineOfItsOwn) {
  const TemporaryFolder folder;
  RecordWriter writer(folder / "run.jsonl");
  writer.WriteLine("first");
  {
    const FileSizeLimit limit(10);
    writer.WriteLine("second");
    writer.WriteLine("third");
  }
  writer.WriteLine("fourth");
  writer.WriteLine("fifth");
  EXPECT_EQ("first\nseco\nfourth\nfifth\n", folder.Read("run.jsonl"));
  EXPECT_EQ(2U, writer.LostLines());
}

}  // namespace
