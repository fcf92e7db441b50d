// Complete runs in which each call to the libraries around the frame throws in turn: no exception
// leaves an entry, Frame_Init fails when it could not do its work, and every entry returns.

#include <stdexcept>

#include "sdk/frame/PluginFrame.h"
#include "tests/support/FrameTest.h"

using testing::Invoke;
using testing::Throw;

namespace {

struct ThrowingCall {
  const char* name;
  std::int32_t initResult;
  bool comesUp;  // whether the start callback still succeeds
  void (*arm)(Seam& seam);
};

const std::runtime_error kError("the call failed");

void PrintTo(const ThrowingCall& call, std::ostream* out) {
  *out << call.name;
}

#define THROWING(library, call, initResult, comesUp)                                  \
  ThrowingCall {                                                                      \
#library "_" #call, initResult, comesUp,                                          \
        [](Seam & seam) { ON_CALL(seam.library, call).WillByDefault(Throw(kError)); } \
  }

const ThrowingCall kCalls[] = {THROWING(platform, Init, -1, false),
                               THROWING(platform, SetAddonAndToolModel, -1, false),
                               THROWING(platform, GetInstalledAddonModel, -1, false),
                               THROWING(platform, GetRunningModule, -1, false),
                               THROWING(platform, SetProductModel, -1, false),
                               THROWING(lpc, Init, -1, false),
                               THROWING(platform, AddPluginsInfo, -1, false),
                               THROWING(platform, Start, 0, false),
                               THROWING(platform, TakeTime, 0, true),
                               THROWING(threads, Grant, 0, false),
                               THROWING(threads, Post, 0, false),
                               THROWING(platform, UpdatePluginsLoadState, 0, false),
                               THROWING(lpc, Notify, 0, false),
                               THROWING(threads, Release, 0, false),
                               THROWING(platform, PreUnInit, 0, true),
                               THROWING(lpc, UnInit, 0, true),
                               THROWING(platform, Stop, 0, true),
                               THROWING(platform, UnInit, 0, true)};

class SeamCall : public FrameEntriesTest, public testing::WithParamInterface<ThrowingCall> {};

TEST_P(SeamCall, ThatThrowsLeavesNoEntryAndHoldsNoLaterOne) {
  tree.Product("a: b:a");
  seam.libraries["a"];
  seam.libraries["b"];
  StartedPluginMap started;
  bool cameUp = false;
  ON_CALL(seam.platform, Start).WillByDefault(Invoke([&](KPXStartFinishFn finished) {
    cameUp = Seam::CallBack(finished, &started);
    return 0;
  }));
  GetParam().arm(seam);

  EXPECT_EQ(GetParam().initResult, Frame_Init());
  if (GetParam().initResult != 0) return;
  Frame_Start();
  EXPECT_EQ(GetParam().comesUp, cameUp);
  Frame_Stop();
  Frame_UnInit();
}

INSTANTIATE_TEST_SUITE_P(Of, SeamCall, testing::ValuesIn(kCalls),
                         [](const auto& call) { return std::string(call.param.name); });

}  // namespace
