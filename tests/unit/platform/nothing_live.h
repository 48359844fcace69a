// What every test of the platform layer leaves behind: no block, no element, no rule.
#pragma once

#include <gtest/gtest.h>
#include <oruplatform/oruplatform.h>

class NothingLive : public testing::Test {
  protected:
    void TearDown() override {
        poolheap_fail_off();
        EXPECT_EQ(poolheap_live_blocks(), blocks_);
        EXPECT_EQ(chunk_live_elements(), elements_);
    }

  private:
    uint64_t blocks_ = poolheap_live_blocks();
    uint64_t elements_ = chunk_live_elements();
};
