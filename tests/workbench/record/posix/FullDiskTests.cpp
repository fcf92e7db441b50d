// Writing records on a full disk, simulated by /dev/full.

#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/posix/FileSizeLimit.h"
#include "workbench/record/FlightRecord.h"

namespace {

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
