#include "host/FrameDriver.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/Latch.h"

namespace {

constexpr std::chrono::seconds kLong{20};

TEST(FrameDriver, MakesTheCallsOneAfterTheOtherOnItsThread) {
  std::string calls;
  std::thread::id first;
  std::thread::id second;
  Latch begun;
  Latch goesOn;
  FrameDriver driver;
  driver.Begin([&] {
    first = std::this_thread::get_id();
    begun.Arrive();
    EXPECT_TRUE(goesOn.Wait());
    calls += "first ";
  });
  ASSERT_TRUE(begun.Wait());
  driver.Begin([&] {
    second = std::this_thread::get_id();
    calls += "second";
  });
  EXPECT_FALSE(driver.WaitForEnd(std::chrono::milliseconds(0)));
  goesOn.Arrive();
  ASSERT_TRUE(driver.WaitForEnd(kLong));
  EXPECT_EQ("first second", calls);
  EXPECT_EQ(first, second);
  EXPECT_NE(std::this_thread::get_id(), first);
}

TEST(FrameDriver, SaysWhenACallHasReturned) {
  FrameDriver* started = nullptr;
  bool hasEnded = false;
  Latch said;
  FrameDriver driver([&] {
    hasEnded = started->WaitForEnd(std::chrono::milliseconds(0));
    said.Arrive();
  });
  started = &driver;
  driver.Begin([] {});
  ASSERT_TRUE(said.Wait());
  EXPECT_TRUE(hasEnded);
}

TEST(FrameDriver, EndsAfterTheCallsThatHaveBegun) {
  bool ended = false;
  {
    FrameDriver driver;
    driver.Begin([] {});
    driver.Begin([&ended] { ended = true; });
  }
  EXPECT_TRUE(ended);
}

}  // namespace
