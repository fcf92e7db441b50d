// The sample product's sub platforms.

#include <gmock/gmock.h>

#include <vector>

#include "samples/board/Board.h"
#include "samples/board/Services.h"
#include "tests/samples/SamplePlugin.h"

namespace {

using testing::ElementsAre;

TEST(VideoPlatform, GivesTheLowestFreeChannelAndLogsIt) {
  const SamplePlugin plugin("video.platform");
  const auto channels = board::Find<ChannelService>();
  EXPECT_EQ(0, channels->Take());
  EXPECT_EQ(1, channels->Take());
  channels->Give(0);
  EXPECT_EQ(0, channels->Take());
  EXPECT_THAT(plugin.Logged(), ElementsAre("3 [video.platform] channel 0 is taken",
                                           "3 [video.platform] channel 1 is taken",
                                           "3 [video.platform] channel 0 is given back",
                                           "3 [video.platform] channel 0 is taken"));
}

TEST(VideoPlatform, LogsThatNoChannelIsFree) {
  const SamplePlugin plugin("video.platform");
  const auto channels = board::Find<ChannelService>();
  for (int channel = 0; channel < 64; ++channel) EXPECT_EQ(channel, channels->Take());
  EXPECT_EQ(-1, channels->Take());
  EXPECT_EQ("4 [video.platform] no channel is free", plugin.Logged().back());
}

TEST(AccessPlatform, RefusesAndLogsMisreadCardNumbers) {
  const SamplePlugin plugin("access.platform");
  const auto cards = board::Find<CardService>();
  EXPECT_TRUE(cards->Valid("79927398713"));
  for (const char* misread : {"79927398712", "7992739871x", ""}) {
    EXPECT_FALSE(cards->Valid(misread)) << misread;
  }
  EXPECT_THAT(plugin.Logged(),
              ElementsAre("3 [access.platform] refuses \"79927398712\": no card has this number",
                          "3 [access.platform] refuses \"7992739871x\": no card has this number",
                          "3 [access.platform] refuses \"\": no card has this number"));
}

}  // namespace
