#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "src/private/RunningProduct.h"
#include "tests/support/Log.h"
#include "tests/support/ProductTree.h"
#include "tests/support/Seam.h"

/// A test of the frame with doubles of all libraries around it and with a new product tree. The
/// module, function and source file of every line that the frame logs are checked.
class FrameTest : public testing::Test {
 protected:
  FrameTest() {
    Log::Instance().Clear();
    g_productName.clear();
    g_productVersion.clear();
    seam.exePath = tree.ExePath();
  }

  void TearDown() override { EXPECT_EQ("", Log::Instance().Faults()); }

  const Log& log = Log::Instance();
  ProductTree tree;
  Seam seam;
};

/// A test through the exported entries. The frame starts its plugins only once in a process, so
/// only one such test can run in a process; ctest runs each test in a separate process.
class FrameEntriesTest : public FrameTest {
 protected:
  void SetUp() override {
    static bool isUsed = false;
    ASSERT_FALSE(std::exchange(isUsed, true)) << "another test has used the frame of this process";
  }
};
