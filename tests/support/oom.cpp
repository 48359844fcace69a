#include "tests/support/oom.h"

#include <gtest/gtest.h>
#include <oruplatform/chunk.h>
#include <oruplatform/poolheap.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/child.h"

namespace oru::test {
namespace {

constexpr int kNoFailureMet = 10;
constexpr int kRunFailed = 11;
constexpr int kMostAllocations = 100000;

// Runs in the child.
int run_once(const std::function<void()> &body, const std::function<void()> &prepare, uint64_t nth,
             bool for_good) {
    if (prepare)
        prepare();
    const uint64_t blocks = poolheap_live_blocks();
    const uint64_t elements = chunk_live_elements();
    poolheap_fail_nth(nth, for_good);
    body();
    poolheap_fail_off();
    EXPECT_EQ(poolheap_live_blocks(), blocks) << "blocks leaked";
    EXPECT_EQ(chunk_live_elements(), elements) << "pool elements leaked";
    if (testing::Test::HasFailure())
        return kRunFailed;
    return poolheap_fail_hits() > 0 ? 0 : kNoFailureMet;
}

bool promised(const OomSweep &options, const std::string &output) {
    for (const std::string &death : options.promised_deaths) {
        if (output.find(death) != std::string::npos)
            return true;
    }
    return false;
}

void sweep(const std::function<void()> &body, const OomSweep &options,
           const std::function<void()> &prepare, bool for_good) {
    for (int nth = 1; nth < kMostAllocations; ++nth) {
        const ChildResult child = run_in_child(
            [&] { return run_once(body, prepare, static_cast<uint64_t>(nth), for_good); });
        if (child.exited_with(kNoFailureMet)) {
            EXPECT_GT(nth, options.at_least) << "fewer allocations than expected";
            return;
        }
        if (child.exited_with(0))
            continue;
        if (child.signal == SIGABRT && promised(options, child.output))
            continue;
        ADD_FAILURE() << "allocation " << nth << (for_good ? " and all behind it" : "")
                      << " failing: " << child.describe();
        return;
    }
    FAIL() << "no end after " << kMostAllocations << " allocations";
}

}  // namespace

void sweep_oom(const std::function<void()> &body, const OomSweep &options,
               const std::function<void()> &prepare) {
    sweep(body, options, prepare, false);
    sweep(body, options, prepare, true);
}

bool oom_hit() {
    return poolheap_fail_hits() > 0;
}

}  // namespace oru::test
