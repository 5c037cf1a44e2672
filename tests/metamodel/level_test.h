#pragma once

#include <gtest/gtest.h>

/// A test of the routines of each processor level that runs here, from level 0, the baseline, up.
template <class Routines, const Routines* const* (*GetAll)(int* count)>
class LevelTest : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    int count = 0;
    const Routines* const* all = GetAll(&count);
    if (GetParam() >= count) GTEST_SKIP() << "not on this processor";
    routines_ = all[GetParam()];
  }

  const Routines* routines_ = nullptr;
};
