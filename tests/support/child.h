// A body in a process of its own, for state that a process has once: pools, the bound back end,
// caches that never expire.
#ifndef ORU_TESTS_SUPPORT_CHILD_H
#define ORU_TESTS_SUPPORT_CHILD_H

#include <csignal>
#include <functional>
#include <string>

namespace oru::test {

struct ChildResult {
    int exit_code = -1;  // -1 when a signal ended it
    int signal = 0;
    std::string output;  // standard output and standard error

    bool exited_with(int code) const { return signal == 0 && exit_code == code; }
    std::string describe() const;
};

// The body's result becomes the exit code; exit handlers do not run.
ChildResult run_in_child(const std::function<int()> &body);

// Runs expectations in a child: a failure there is a failure here.
void expect_in_child(const std::function<void()> &body);

}  // namespace oru::test

#endif
