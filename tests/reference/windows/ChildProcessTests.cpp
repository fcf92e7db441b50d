#include "reference/os/ChildProcess.h"

#include <gtest/gtest.h>

#include "reference/os/LocalText.h"

namespace {

TEST(KilledChildProcess, EndsAtOnce) {
  ChildSettings settings;
  settings.program = PathFromLocal(TEV_REFERENCE_CHILD);
  settings.arguments = {"until-stopped"};
  ChildProcess child(settings);
  child.Kill();
  EXPECT_EQ((ChildEnd{false, 1}), child.WaitFor(std::chrono::minutes(1)));
}

TEST(ChildProcessThatFaults, EndsWithTheExceptionsCode) {
  ChildSettings settings;
  settings.program = PathFromLocal(TEV_REFERENCE_CHILD);
  settings.arguments = {"fault"};
  const std::optional<ChildEnd> end = ChildProcess(settings).WaitFor(std::chrono::minutes(1));
  EXPECT_EQ((ChildEnd{true, 0xC0000005}), end);
}

}  // namespace
