// Starts of threads for which the system has no room. Sanitizers reserve address space of their
// own, so the limit can only be set without them.
#ifndef ORUAPI_SANITIZED

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "support.h"

namespace oru::threads::test {
namespace {

void *never(void *) {
    abort();
}

void allow_no_more_address_space() {
    const rlimit limit{1, 1};
    if (setrlimit(RLIMIT_AS, &limit) != 0) {
        _exit(90);
    }
}

void exhaust_heap() {
    for (size_t size = 1 << 20; size >= 16; size /= 2) {
        while (void *volatile block = malloc(size)) {
            (void)block;
        }
    }
}

[[noreturn]] void exit_with_result_of_create() {
    oru_thread_t thread = 99;
    const int32_t rc = oru_thread_create(&thread, nullptr, never, nullptr);
    _exit(thread == 99 ? rc : 91);
}

TEST(ThreadCreateDeathTest, WithoutRoomForAStackGives11) {
    EXPECT_EXIT(
        {
            void *volatile reserve = malloc(4096);
            allow_no_more_address_space();
            free(reserve);
            exit_with_result_of_create();
        },
        testing::ExitedWithCode(11), "");
}

TEST(ThreadCreateDeathTest, WithoutMemoryGives12) {
    EXPECT_EXIT(
        {
            allow_no_more_address_space();
            exhaust_heap();
            exit_with_result_of_create();
        },
        testing::ExitedWithCode(12), "");
}

}  // namespace
}  // namespace oru::threads::test

#endif
