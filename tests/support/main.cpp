// The tests' main program. Every test must give back what it took: live blocks and pool elements
// are counted before and after each. With ORU_TEST_POOLS set, all pools of the library are sized
// first, so that the same tests run on pools.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>

#include <cstdint>
#include <cstdlib>

namespace {

class NothingStaysLive : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo &) override {
        blocks_ = poolheap_live_blocks();
        elements_ = chunk_live_elements();
    }

    void OnTestEnd(const testing::TestInfo &info) override {
        if (info.result()->Failed())
            return;
        EXPECT_EQ(poolheap_live_blocks(), blocks_) << "blocks leaked";
        EXPECT_EQ(chunk_live_elements(), elements_) << "pool elements leaked";
    }

    uint64_t blocks_ = 0;
    uint64_t elements_ = 0;
};

constexpr const char *kPoolNames[] = {
#include "pool_names.inc"
};

void size_pools() {
    for (const char *name : kPoolNames) {
        void *symbol = dlsym(RTLD_DEFAULT, name);
        if (symbol == nullptr)
            continue;
        reinterpret_cast<void *(*)(intptr_t, uintptr_t)>(symbol)(64, 0);
    }
}

}  // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new NothingStaysLive);
    if (std::getenv("ORU_TEST_POOLS") != nullptr)
        size_pools();
    return RUN_ALL_TESTS();
}
