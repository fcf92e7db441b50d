#include "host/BackgroundWriter.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>

#include "tests/support/Latch.h"

namespace {

/// A reader that accepts a text when the test lets it go on. Never destroyed, like the writer.
struct Reader {
  Latch begun;
  Latch goesOn;
  std::mutex mutex;
  std::string text;   // guarded by mutex
  std::string error;  // written before goesOn opens

  std::string Take(const std::string& next) {
    begun.Arrive();
    EXPECT_TRUE(goesOn.Wait());
    const std::lock_guard<std::mutex> lock(mutex);
    text += next;
    return error;
  }

  std::string Text() {
    const std::lock_guard<std::mutex> lock(mutex);
    return text;
  }
};

constexpr std::chrono::seconds kLong{20};

BackgroundWriter& MakeWriter(Reader& reader) {
  return *new BackgroundWriter("test",
                               [&reader](const std::string& text) { return reader.Take(text); });
}

TEST(BackgroundWriter, WritesEverythingInOrder) {
  Reader& reader = *new Reader;
  BackgroundWriter& writer = MakeWriter(reader);
  writer.Write("one ");
  ASSERT_TRUE(reader.begun.Wait());
  writer.Write("two ");
  writer.Write("three");
  reader.goesOn.Arrive();
  writer.Flush(kLong);
  EXPECT_EQ("one two three", reader.Text());
  EXPECT_EQ("", writer.Error());
}

TEST(BackgroundWriter, IsBehindWhileATextWaitsForTheReader) {
  Reader& reader = *new Reader;
  BackgroundWriter& writer = MakeWriter(reader);
  EXPECT_FALSE(writer.IsBehind());
  writer.Write("one");
  ASSERT_TRUE(reader.begun.Wait());
  EXPECT_FALSE(writer.IsBehind());
  writer.Write("two");
  EXPECT_TRUE(writer.IsBehind());
  reader.goesOn.Arrive();
  writer.Flush(kLong);
  EXPECT_FALSE(writer.IsBehind());
}

TEST(BackgroundWriter, TriesNothingMoreAfterAFailure) {
  Reader& reader = *new Reader;
  reader.error = "the disk is full";
  reader.goesOn.Arrive();
  BackgroundWriter& writer = MakeWriter(reader);
  writer.Write("one");
  writer.Flush(kLong);
  writer.Write("two");
  writer.Flush(kLong);
  EXPECT_EQ("the disk is full", writer.Error());
  EXPECT_EQ("one", reader.Text());
}

TEST(BackgroundWriter, HasNothingToWaitForAtFirst) {
  BackgroundWriter& writer = MakeWriter(*new Reader);
  writer.Flush(std::chrono::milliseconds(0));
  EXPECT_EQ("", writer.Error());
}

TEST(BackgroundWriter, SaysThatNobodyReads) {
  Reader& reader = *new Reader;
  BackgroundWriter& writer = MakeWriter(reader);
  writer.Write("one");
  ASSERT_TRUE(reader.begun.Wait());
  writer.Flush(std::chrono::milliseconds(0));
  EXPECT_EQ("nobody reads it", writer.Error());
  reader.goesOn.Arrive();
}

}  // namespace
