// Running out of memory as a test case: a body is run with its first allocation failing, then its
// second, and so on until a run meets no failure; once with only that allocation failing and once
// with all behind it. Each run has a child process of its own.
//
//     oru::test::sweep_oom([] {
//         ORUDoName *name = oru_do_name_new("a");
//         if (name == nullptr) return;   // reported, as documented
//         EXPECT_STREQ(oru_do_name_get_strname(name), "a");
//         oru_do_name_deref(name);
//     });
//
// A run fails when an expectation in the body does, when something that the body allocated is still
// live at its end, or when the process dies, unless the death is one that was promised.
#ifndef ORU_TESTS_SUPPORT_OOM_H
#define ORU_TESTS_SUPPORT_OOM_H

#include <functional>
#include <string>
#include <vector>

namespace oru::test {

struct OomSweep {
    // What stands on standard error when the process may die of a failed allocation.
    std::vector<std::string> promised_deaths{};
    // A body that never allocates would make a test that cannot fail.
    int at_least = 1;
};

// `prepare` runs in the child before allocations begin to fail; what it makes may stay live.
void sweep_oom(const std::function<void()> &body, const OomSweep &options = {},
               const std::function<void()> &prepare = nullptr);

// Inside a body: whether an allocation was made to fail already.
bool oom_hit();

}  // namespace oru::test

#endif
