#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "src/private/RunningProduct.h"
#include "tests/support/Log.h"
#include "tests/support/ProductTree.h"
#include "tests/support/Seam.h"

/// A test of the frame between its doubles, with a product tree of its own. Every line that the
/// frame logs in it is checked for its module, its function and its source file.
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

/// A test through the exported entries. The frame starts its plugins once in a process, so of
/// several tests in one process only the first can run; ctest runs each in a process of its own.
class FrameEntriesTest : public FrameTest {
 protected:
  void SetUp() override {
    static bool isUsed = false;
    ASSERT_FALSE(std::exchange(isUsed, true)) << "another test has used the frame of this process";
  }
};
