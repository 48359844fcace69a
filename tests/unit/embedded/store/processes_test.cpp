/* Processes on one file that begin together, or are killed on the way. */
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "in_folder.h"
#include "rows.h"
#include "store/sqlite.h"

namespace embedded {
namespace {

class StoreProcesses : public InFolder {
  protected:
    std::string path(int number = 0) const { return folder + "/db" + std::to_string(number); }

    /* What stands in a file, after it was looked over by the engine itself. */
    std::vector<std::string> sound_rows(Revision &head) const {
        Connection connection(path());
        Statement check = connection.prepare("PRAGMA integrity_check");
        EXPECT_TRUE(check.step());
        EXPECT_EQ(check.bytes(0), "ok");
        check.reset();
        const std::unique_ptr<Store> store = open_sqlite_store({.path = path()});
        head = store->head();
        return everything_in(*store);
    }
};

TEST_F(StoreProcesses, MakeANewFileTogether) {
    constexpr int kFiles = 10;
    constexpr int kProcesses = 6;
    int start[2];
    ASSERT_EQ(pipe(start), 0);
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; process++) {
        children.push_back(fork());
        if (children.back() != 0)
            continue;
        char byte = 0;
        close(start[1]);
        // all of them begin when the other end is closed
        if (read(start[0], &byte, 1) != 0)
            _exit(1);
        try {
            for (int file = 0; file < kFiles; file++) {
                const auto store =
                    open_sqlite_store({.path = path(file), .busy_milliseconds = 20000});
                commit(*store, {create("k" + std::to_string(process))});
            }
        } catch (const std::exception &) {
            _exit(2);
        }
        _exit(0);
    }
    close(start[0]);
    close(start[1]);
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    for (int file = 0; file < kFiles; file++)
        EXPECT_EQ(everything_in(*open_sqlite_store({.path = path(file)})).size(), kProcesses);
}

/* Makes ten rows a commit, tells each commit that was answered, and forgets old ones as it goes. */
[[noreturn]] void commit_until_killed(const std::string &path, int tell) {
    const auto store =
        open_sqlite_store({.path = path, .durable = false, .keep_commits = 3, .keep_seconds = -1});
    const std::string long_text(2000, 't');
    while (true) {
        const Revision next = store->head() + 1;
        std::vector<Write> writes;
        for (int row = 0; row < 10; row++)
            writes.push_back(create(std::to_string(next) + "/" + std::to_string(row),
                                    {number("x", row), text("t", long_text)}));
        const CommitResult result = commit(*store, std::move(writes));
        if (write(tell, &result.revision, sizeof result.revision) !=
            static_cast<ssize_t>(sizeof result.revision))
            _exit(1);
    }
}

TEST_F(StoreProcesses, KilledWithinCommitsLeavesWholeOnes) {
    for (int round = 0; round < 8; round++) {
        int answers[2];
        ASSERT_EQ(pipe(answers), 0);
        const pid_t child = fork();
        if (child == 0)
            commit_until_killed(path(), answers[1]);
        close(answers[1]);
        Revision answered = 0;
        const int most = 1 + 7 * round;
        for (int i = 0; i < most; i++)
            ASSERT_EQ(read(answers[0], &answered, sizeof answered), sizeof answered);
        usleep(static_cast<useconds_t>(137 * round));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        // what was answered before the end
        while (read(answers[0], &answered, sizeof answered) == sizeof answered) {
        }
        close(answers[0]);

        Revision head = 0;
        const std::vector<std::string> rows = sound_rows(head);
        EXPECT_GE(head, answered);
        EXPECT_LE(head, answered + 1);
        EXPECT_EQ(rows.size(), static_cast<size_t>(10 * head));
    }
}

}  // namespace
}  // namespace embedded
