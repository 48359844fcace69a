#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "in_folder.h"
#include "rows.h"
#include "store/schema.h"

namespace embedded {
namespace {

using Status = CommitResult::Status;
using Texts = std::vector<std::string>;

class StoreFile : public InFolder {
  protected:
    std::string path(const char *name = "db") { return folder + "/" + name; }
    std::unique_ptr<Store> open(const char *name = "db") {
        return open_sqlite_store({.path = path(name), .busy_milliseconds = 100});
    }

    StoreFault::Kind fault_of(const char *name) {
        try {
            open(name);
        } catch (const StoreFault &fault) {
            EXPECT_STRNE(fault.what(), "");
            return fault.kind;
        }
        ADD_FAILURE() << name << " was opened";
        return StoreFault::Kind::io;
    }

    /* Runs a body in a process of its own; its result is the exit status. */
    template <typename Body>
    static int in_process(Body body) {
        const pid_t child = fork();
        if (child == 0)
            _exit(body());
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(StoreFile, KeepsWhatWasCommitted) {
    commit(*open(), {create("a", {number("x", 1)})});
    const std::unique_ptr<Store> store = open();
    EXPECT_EQ(store->head(), 1);
    EXPECT_EQ(everything_in(*store), Texts{"a:K{x/5=1}"});
    EXPECT_EQ(commit(*store, {create("b", {number("x", 2)})}).revision, 2);
}

TEST_F(StoreFile, TwoConnectionsSeeEachOther) {
    const std::unique_ptr<Store> one = open();
    const std::unique_ptr<Store> two = open();
    commit(*one, {create("a", {text("t", "from one")}, "New")});
    EXPECT_EQ(read_one(*two, "a", two->head()), "a:New{t/8=\"from one\"}");
    commit(*two, {set("a", {text("t", "from two")})});
    EXPECT_EQ(read_one(*one, "a", one->head()), "a:New{t/8=\"from two\"}");
    EXPECT_EQ(one->head(), 2);
}

TEST_F(StoreFile, ReadersDoNotWaitForAWriter) {
    const std::unique_ptr<Store> store = open();
    commit(*store, {create("a")});
    Connection writer(path());
    Transaction transaction(writer, Transaction::Aim::write);
    writer.execute("INSERT INTO revision VALUES (2, 0, '', NULL)");
    EXPECT_EQ(everything_in(*store), Texts{"a:K{}"});
    EXPECT_EQ(everything_in(*open()), Texts{"a:K{}"});
}

TEST_F(StoreFile, SecondWriterWaitsAndThenIsTold) {
    const std::unique_ptr<Store> store = open();
    Connection writer(path());
    const Transaction transaction(writer, Transaction::Aim::write);
    try {
        commit(*store, {create("a")});
        ADD_FAILURE() << "two writers at a time";
    } catch (const StoreFault &fault) {
        EXPECT_EQ(fault.kind, StoreFault::Kind::busy);
    }
    EXPECT_EQ(store->head(), 0);
}

TEST_F(StoreFile, WriterGetsItsTurn) {
    const std::unique_ptr<Store> store = open_sqlite_store({.path = path()});
    std::thread other([this] {
        Connection writer(path());
        const Transaction transaction(writer, Transaction::Aim::write);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(commit(*store, {create("a")}).status, Status::done);
    other.join();
}

/* Commits under names of their own until each process has made all of its rows. */
TEST_F(StoreFile, ProcessesThatCommitTogetherLoseNothing) {
    constexpr int kProcesses = 3;
    constexpr int kRows = 20;
    commit(*open(), {});
    std::vector<pid_t> children;
    for (int process = 0; process < kProcesses; process++) {
        children.push_back(fork());
        if (children.back() == 0) {
            const std::unique_ptr<Store> store =
                open_sqlite_store({.path = path(), .durable = false, .busy_milliseconds = 20000});
            for (int row = 0; row < kRows; row++) {
                const std::string key = std::to_string(process) + "/" + std::to_string(row);
                if (commit(*store, {create(key, {number("x", row)})}).status != Status::done)
                    _exit(1);
            }
            _exit(0);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    const std::unique_ptr<Store> store = open();
    EXPECT_EQ(store->head(), 1 + kProcesses * kRows);
    EXPECT_EQ(everything_in(*store).size(), static_cast<size_t>(kProcesses * kRows));
}

/* A process that dies within a commit leaves neither its rows nor a lock. */
TEST_F(StoreFile, DeathOfAWriterLeavesNothing) {
    commit(*open(), {create("a")});
    EXPECT_EQ(in_process([this] {
                  Connection writer(path());
                  const Transaction transaction(writer, Transaction::Aim::write);
                  writer.execute("INSERT INTO revision VALUES (2, 0, '', NULL)");
                  _exit(7);
                  return 0;
              }),
              7);
    const std::unique_ptr<Store> store = open();
    EXPECT_EQ(store->head(), 1);
    EXPECT_EQ(commit(*store, {create("b")}).revision, 2);
}

TEST_F(StoreFile, ThreadsMayShareAStore) {
    const std::unique_ptr<Store> store = open_sqlite_store({});
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; thread++) {
        threads.emplace_back([&store, thread] {
            for (int row = 0; row < 25; row++) {
                commit(*store, {create(std::to_string(thread * 100 + row))});
                everything_in(*store);
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(everything_in(*store).size(), 100U);
}

/* ---- Files that are none of ours ---- */

TEST_F(StoreFile, OtherFilesAreRefused) {
    std::ofstream(path("text")) << std::string(5000, 'x');
    EXPECT_EQ(fault_of("text"), StoreFault::Kind::foreign);

    Connection(path("other")).execute("CREATE TABLE theirs (x)");
    EXPECT_EQ(fault_of("other"), StoreFault::Kind::foreign);

    EXPECT_EQ(fault_of("no/such/folder"), StoreFault::Kind::denied);
    std::filesystem::create_directory(path("folder"));
    EXPECT_EQ(fault_of("folder"), StoreFault::Kind::denied);
}

TEST_F(StoreFile, OtherDatabaseStaysAsItIs) {
    Connection(path("other")).execute("CREATE TABLE theirs (x)");
    std::ifstream before(path("other"), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(before), {}};
    fault_of("other");
    std::ifstream after(path("other"), std::ios::binary);
    EXPECT_TRUE((std::string{std::istreambuf_iterator<char>(after), {}}) == bytes);
}

TEST_F(StoreFile, NewerOneIsRefused) {
    commit(*open(), {});
    Connection(path()).execute("PRAGMA user_version = 99");
    EXPECT_EQ(fault_of("db"), StoreFault::Kind::foreign);
}

TEST_F(StoreFile, EmptyFileBecomesADatabase) {
    std::ofstream(path("empty")).flush();
    EXPECT_EQ(open("empty")->head(), 0);
}

TEST_F(StoreFile, DamageIsToldAndDoesNotCrash) {
    {
        const std::unique_ptr<Store> store = open();
        std::vector<Write> writes;
        for (int i = 0; i < 500; i++)
            writes.push_back(create(std::to_string(i), {text("t", "some text that takes room")}));
        commit(*store, std::move(writes));
    }
    std::filesystem::resize_file(path(), std::filesystem::file_size(path()) / 2);
    try {
        everything_in(*open());
        ADD_FAILURE() << "half of a database was read";
    } catch (const StoreFault &fault) {
        EXPECT_EQ(fault.kind, StoreFault::Kind::damaged);
    }
}

/* The engine does not know how far it came. */
TEST_F(StoreFile, FullDiskIsToldAndNothingIsWritten) {
    const std::unique_ptr<Store> store = open();
    commit(*store, {create("a")});
    const std::string big(1 << 20, 'x');
    const int status = in_process([&] {
        const std::unique_ptr<Store> mine = open();
        const rlimit limit = {200'000, 200'000};
        setrlimit(RLIMIT_FSIZE, &limit);
        signal(SIGXFSZ, SIG_IGN);
        const CommitResult result = commit(*mine, {create("b", {text("t", big)})});
        return result.status == Status::unknown && mine->head() == 1 ? 7 : 8;
    });
    EXPECT_EQ(status, 7);
    EXPECT_EQ(everything_in(*open()), Texts{"a:K{}"});
}

/* ---- Versions of the schema ---- */

TEST_F(StoreFile, OlderSchemaIsBroughtUpStepByStep) {
    const char *const steps[] = {"CREATE TABLE t (x); INSERT INTO t VALUES (1)",
                                 "ALTER TABLE t ADD y DEFAULT 5", "UPDATE t SET x = x + y"};
    Connection connection(path());
    migrate(connection, std::span(steps, 1));
    migrate(connection, steps);
    migrate(connection, steps);
    Statement ask = connection.prepare("SELECT x, y FROM t");
    ASSERT_TRUE(ask.step());
    EXPECT_EQ(ask.integer(0), 6);
    EXPECT_EQ(ask.integer(1), 5);
}

TEST_F(StoreFile, StepThatFailsLeavesTheOlderSchema) {
    const char *const steps[] = {"CREATE TABLE t (x)", "INSERT INTO t VALUES (1); nonsense"};
    Connection connection(path());
    migrate(connection, std::span(steps, 1));
    EXPECT_THROW(migrate(connection, steps), StoreFault);
    Statement ask = connection.prepare("SELECT count(*) FROM t");
    ASSERT_TRUE(ask.step());
    EXPECT_EQ(ask.integer(0), 0);
}

}  // namespace
}  // namespace embedded
