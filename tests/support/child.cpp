#include "tests/support/child.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace oru::test {
namespace {

[[noreturn]] void be_child(const std::function<int()> &body, int write_end) {
    dup2(write_end, STDOUT_FILENO);
    dup2(write_end, STDERR_FILENO);
    close(write_end);
    const int code = body();
    std::fflush(nullptr);
    _exit(code);
}

std::string read_all(int fd) {
    std::string text;
    char piece[4096];
    for (ssize_t n; (n = read(fd, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(n));
    }
    close(fd);
    return text;
}

}  // namespace

std::string ChildResult::describe() const {
    return (signal != 0 ? "killed by signal " + std::to_string(signal)
                        : "exited with " + std::to_string(exit_code)) +
           "\n" + output;
}

ChildResult run_in_child(const std::function<int()> &body) {
    int ends[2];
    if (pipe(ends) != 0)
        std::abort();
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid < 0)
        std::abort();
    if (pid == 0) {
        close(ends[0]);
        be_child(body, ends[1]);
    }
    close(ends[1]);
    ChildResult result;
    result.output = read_all(ends[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFSIGNALED(status)) {
        result.signal = WTERMSIG(status);
    } else {
        result.exit_code = WEXITSTATUS(status);
    }
    return result;
}

void expect_in_child(const std::function<void()> &body) {
    const ChildResult child = run_in_child([&] {
        body();
        return testing::Test::HasFailure() ? 1 : 0;
    });
    EXPECT_TRUE(child.exited_with(0)) << child.describe();
}

}  // namespace oru::test
