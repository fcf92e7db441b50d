#include "tests/system/StopProcess.h"

#include <gtest/gtest.h>

#include "tests/support/windows/ConsoleEvent.h"

void StopProcess(boost::process::child& process, StopKind how) {
  const DWORD kind = how == StopKind::kInterrupt ? CTRL_C_EVENT : CTRL_CLOSE_EVENT;
  EXPECT_TRUE(RaiseConsoleEvent(process.native_handle(), kind));
}

int EndingSignal(const boost::process::child&) {
  return 0;
}
