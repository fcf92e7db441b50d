#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "sdk/lpc/lpc.h"
#include "tests/contract/Subject.h"

namespace {

TEST(LpcFramework, ComesUpAndGoesDownOnce) {
  const std::unique_ptr<Subject> subject = Subject::Make();
  EXPECT_NE(0, TevLPCFrameUnInit());
  EXPECT_EQ(0, TevLPCFrameInit("lpc_server_framework", PlatformInfo()));
  EXPECT_NE(0, TevLPCFrameInit("lpc_server_framework", PlatformInfo()));
  EXPECT_EQ(0, TevLPCFrameUnInit());
  EXPECT_NE(0, TevLPCFrameUnInit());
}

TEST(LpcFramework, IsNotifiedFromAnyThread) {
  const std::unique_ptr<Subject> subject = Subject::Make();
  ASSERT_EQ(0, TevLPCFrameInit("lpc_server_framework", PlatformInfo()));
  std::thread([] { TevLPCFrameNotifyStartPlugins(""); }).join();
  EXPECT_EQ(0, TevLPCFrameUnInit());
}

}  // namespace
