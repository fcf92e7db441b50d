#include "host/StartDelays.h"

#include <gtest/gtest.h>

#include <future>

using std::chrono::milliseconds;

namespace {

constexpr std::chrono::minutes kLimit{1};

DelayOptions Delays(const std::vector<std::string>& plugins, std::optional<int> shuffle = {}) {
  DelayOptions options;
  options.plugins = plugins;
  options.shuffle = shuffle;
  return options;
}

TEST(PluginDelay, IsReadBehindTheLastEqualsSign) {
  EXPECT_EQ(std::pair(std::string("a=b.server"), milliseconds(20)),
            ParsePluginDelay("a=b.server=20"));
  EXPECT_EQ(std::pair(std::string(), milliseconds(0)), ParsePluginDelay("=0"));
}

TEST(PluginDelay, IsAWholeNumberOfMilliseconds) {
  for (const char* const text : {"a", "a=", "a=-1", "a=1.5", "a=1s", "a=3600001", "a= 1", ""}) {
    EXPECT_EQ(std::nullopt, ParsePluginDelay(text)) << text;
  }
}

TEST(Delays, AreNoneWithoutTheOptions) {
  EXPECT_FALSE(DelaysOf(Delays({})));
  EXPECT_EQ("", DelaysText(Delays({})));
}

TEST(Delays, OfOnePluginLeaveTheOthersAlone) {
  const StartDelays::DelayOf delayOf = DelaysOf(Delays({"a=1", "b=2", "a=3"}));
  EXPECT_EQ(milliseconds(3), delayOf("a"));
  EXPECT_EQ(milliseconds(2), delayOf("b"));
  EXPECT_EQ(milliseconds(0), delayOf("c"));
}

TEST(Delays, OfTheSeedGiveWayToAPluginsOwn) {
  DelayOptions options = Delays({"a=5000"}, 1);
  options.shuffleOver = 1000;
  const StartDelays::DelayOf delayOf = DelaysOf(options);
  EXPECT_EQ(milliseconds(5000), delayOf("a"));
  EXPECT_EQ(milliseconds(631), delayOf("config.server"));
  EXPECT_EQ(
      "the plugins' starts are delayed (--shuffle 1 over 1000 ms, --delay a=5000): order and times "
      "of this start are not those of an ordinary one",
      DelaysText(options));
}

TEST(Delays, OfPluginsThatTheFrameDoesNotStartAreNamed) {
  const std::vector<PluginHead> plugins = {{"a", "server", "", "", 0, {}},
                                           {"p", "platform", "", "", 0, {}},
                                           {"d", "driver", "", "", 0, {}}};
  EXPECT_EQ((std::vector<std::string>{"d", "x"}),
            UnknownDelayed(Delays({"a=1", "p=1", "d=1", "x=1"}), plugins));
}

TEST(DelayedStart, BeginsNoEarlierThanItsTimeAfterTheFirst) {
  using Clock = std::chrono::steady_clock;
  StartDelays delays(
      [](const std::string& plugin) { return milliseconds(plugin == "a" ? 0 : 50); });
  const Clock::time_point before = Clock::now();
  delays.Wait("a");
  delays.Wait("b");
  EXPECT_LE(milliseconds(50), Clock::now() - before);
}

TEST(DelayedStart, BeginsAtOnceWhenItsTimeAfterTheFirstHasPassed) {
  using Clock = std::chrono::steady_clock;
  constexpr milliseconds delay{500};
  StartDelays delays([&](const std::string&) { return delay; });
  const Clock::time_point before = Clock::now();
  delays.Wait("a");
  delays.Wait("b");
  EXPECT_GT(2 * delay, Clock::now() - before);
}

TEST(DelayedStart, BeginsAtOnceWhenTheWaitingEnds) {
  std::promise<void> isAsked;
  StartDelays delays([&isAsked](const std::string&) {
    isAsked.set_value();
    return milliseconds(3'600'000);
  });
  const auto wait = std::async(std::launch::async, [&delays] { delays.Wait("a"); });
  isAsked.get_future().wait();
  delays.End();
  EXPECT_EQ(std::future_status::ready, wait.wait_for(kLimit));
}

TEST(DelayedStart, BeginsAtOnceAfterTheWaitingHasEnded) {
  StartDelays delays([](const std::string&) { return milliseconds(3'600'000); });
  delays.End();
  const auto wait = std::async(std::launch::async, [&delays] { delays.Wait("a"); });
  EXPECT_EQ(std::future_status::ready, wait.wait_for(kLimit));
}

}  // namespace
