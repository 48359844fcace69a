// The sequence table between threads: senders that wait, receivers that answer, sessions that are
// cancelled and woken meanwhile. Made to run under the thread sanitizer.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "oru/ipc_seq.h"
#include "tests/unit/threads/support.h"

namespace {

using oru::threads::test::Thread;

constexpr int kThreads = 4;
constexpr uint32_t kRounds = 300;

// What a wait ended with.
struct Outcome {
    intptr_t reply;
    int32_t rc;
};

Outcome wait_for_signal(ht_val &val) {
    oru_mtx_lock(&val.lock);
    while (val.signaled == 0)
        oru_cond_wait(&val.cond, &val.lock);
    const Outcome outcome{val.reply, val.rc};
    oru_mtx_unlock(&val.lock);
    return outcome;
}

// Requests on their way to who answers them; 0 says that there are no more.
class Wire {
  public:
    void send(uint32_t n) {
        {
            const std::lock_guard lock(mutex_);
            numbers_.push_back(n);
        }
        arrived_.notify_one();
    }
    uint32_t receive() {
        std::unique_lock lock(mutex_);
        arrived_.wait(lock, [this] { return !numbers_.empty(); });
        const uint32_t n = numbers_.front();
        numbers_.pop_front();
        return n;
    }

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<uint32_t> numbers_;
};

// The answer to a request.
intptr_t answer_to(uint32_t n) {
    return static_cast<intptr_t>(n) * 3 + 1;
}

// One request, from its insertion to its removal.
Outcome request(seq_ht_table *table, Wire &wire, uint32_t n, uint32_t session_id) {
    ht_val *val = ipc_seq_create_ht_val(session_id);
    char *key = util_build_key(n);
    EXPECT_EQ(ipc_seq_ht_insert(table, key, val), 0);
    wire.send(n);
    const Outcome outcome = wait_for_signal(*val);
    EXPECT_EQ(ipc_seq_ht_find(table, key), val);
    EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    return outcome;
}

// Answers until there is no more to answer. Some requests may be given up already.
void answer(seq_ht_table *table, Wire &wire) {
    while (const uint32_t n = wire.receive()) {
        char *key = util_build_key(n);
        ipc_seq_ht_find_and_update(table, key, answer_to(n));
        ipc_seq_delete_ht_key(key);
    }
}

using Threads = std::vector<std::unique_ptr<Thread>>;

template <class Body>
void start(Threads &threads, Body body) {
    for (int i = 0; i < kThreads; ++i)
        threads.push_back(std::make_unique<Thread>([body, i] { body(static_cast<uint32_t>(i)); }));
}

class Waiting : public testing::Test {
  protected:
    ~Waiting() override {
        if (table != nullptr) {
            EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
        }
    }
    // Threads that answer, until `hang_up`.
    void start_answering() {
        start(receivers, [this](uint32_t) { answer(table, wire); });
    }
    void hang_up() {
        for (int i = 0; i < kThreads; ++i)
            wire.send(0);
        receivers.clear();
    }

    seq_ht_table *table = ipc_seq_ht_init(16);
    Wire wire;
    Threads receivers;
};

TEST_F(Waiting, EverySenderGetsItsOwnAnswer) {
    start_answering();
    Threads senders;
    start(senders, [this](uint32_t sender) {
        for (uint32_t round = 1; round <= kRounds; ++round) {
            const uint32_t n = sender * kRounds + round;
            const Outcome outcome = request(table, wire, n, sender);
            EXPECT_EQ(outcome.reply, answer_to(n));
            EXPECT_EQ(outcome.rc, 0);
        }
    });
    senders.clear();
    hang_up();
}

TEST_F(Waiting, ACancelledSessionStopsWaitingAndTheOthersGoOn) {
    std::atomic<int> waiting{0};
    std::atomic<int> canceled{0};
    std::atomic<int> answered{0};
    Threads senders;
    start(senders, [&](uint32_t sender) {
        ht_val *val = ipc_seq_create_ht_val(sender % 2);
        char *key = util_build_key(sender + 1);
        EXPECT_EQ(ipc_seq_ht_insert(table, key, val), 0);
        ++waiting;
        const Outcome outcome = wait_for_signal(*val);
        if (outcome.rc == 33) {
            EXPECT_EQ(sender % 2, 1u);
            EXPECT_EQ(outcome.reply, 0);
            ++canceled;
        } else {
            EXPECT_EQ(outcome.rc, 0);
            EXPECT_EQ(outcome.reply, answer_to(sender + 1));
            ++answered;
        }
        EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    });
    while (waiting < kThreads)
        oru_thread_yield();
    EXPECT_EQ(ipc_seq_ht_cancel(table, 1), 0);
    while (canceled < kThreads / 2)
        oru_thread_yield();
    EXPECT_EQ(answered, 0);
    start_answering();
    for (uint32_t sender = 0; sender < kThreads; sender += 2)
        wire.send(sender + 1);
    senders.clear();
    EXPECT_EQ(answered, kThreads / 2);
    hang_up();
}

TEST_F(Waiting, AllAreWokenWithNoAnswer) {
    std::atomic<int> waiting{0};
    Threads senders;
    start(senders, [&](uint32_t sender) {
        ht_val *val = ipc_seq_create_ht_val(sender);
        char *key = util_build_key(sender + 1);
        EXPECT_EQ(ipc_seq_ht_insert(table, key, val), 0);
        ++waiting;
        const Outcome outcome = wait_for_signal(*val);
        EXPECT_EQ(outcome.reply, 0);
        EXPECT_EQ(outcome.rc, 0);
        EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
    });
    while (waiting < kThreads)
        oru_thread_yield();
    EXPECT_EQ(ipc_seq_ht_wake_all(table), 0);
    senders.clear();
}

TEST_F(Waiting, SessionsAreWokenOneByOne) {
    std::atomic<uint32_t> waiting{0};
    std::atomic<uint32_t> woken{0};
    Threads senders;
    start(senders, [&](uint32_t sender) {
        ht_val *val = ipc_seq_create_ht_val(sender);
        char *key = util_build_key(sender + 1);
        EXPECT_EQ(ipc_seq_ht_insert(table, key, val), 0);
        ++waiting;
        EXPECT_EQ(wait_for_signal(*val).rc, 0);
        EXPECT_EQ(woken, sender);
        EXPECT_EQ(ipc_seq_ht_remove(table, key), 0);
        ++woken;
    });
    while (waiting < kThreads)
        oru_thread_yield();
    for (uint32_t session_id = 0; session_id < kThreads; ++session_id) {
        EXPECT_EQ(ipc_seq_ht_wake_session_id(table, session_id), 0);
        while (woken <= session_id)
            oru_thread_yield();
    }
}

// Waiters own their records and keys then, and end them as soon as they wake.
TEST_F(Waiting, TheEndOfTheTableWakesAllWhoEndTheirOwn) {
    std::atomic<int> waiting{0};
    Threads senders;
    start(senders, [&](uint32_t sender) {
        ht_val *val = ipc_seq_create_ht_val(sender);
        char *key = util_build_key(sender + 1);
        EXPECT_EQ(ipc_seq_ht_insert(table, key, val), 0);
        ++waiting;
        wait_for_signal(*val);
        ipc_seq_delete_ht_val(val);
        ipc_seq_delete_ht_key(key);
    });
    while (waiting < kThreads)
        oru_thread_yield();
    EXPECT_EQ(ipc_seq_ht_destroy(table), 0);
    table = nullptr;
    senders.clear();
}

// Whatever ends a wait, it ends, with an answer that is its own, a cancellation, or nothing.
TEST_F(Waiting, EverythingAtOnceLeavesNobodyWaiting) {
    start_answering();
    std::atomic<bool> done{false};
    Thread canceller([&] {
        for (uint32_t session_id = 0; !done; session_id = (session_id + 1) % kThreads) {
            EXPECT_EQ(ipc_seq_ht_cancel(table, session_id), 0);
            oru_thread_yield();
        }
    });
    Thread waker([&] {
        for (uint32_t session_id = 0; !done; session_id = (session_id + 1) % kThreads) {
            EXPECT_EQ(ipc_seq_ht_wake_session_id(table, session_id), 0);
            EXPECT_EQ(ipc_seq_ht_wake_all(table), 0);
            oru_thread_yield();
        }
    });
    Threads senders;
    start(senders, [this](uint32_t sender) {
        for (uint32_t round = 1; round <= kRounds; ++round) {
            const uint32_t n = sender * kRounds + round;
            const Outcome outcome = request(table, wire, n, sender);
            EXPECT_TRUE(outcome.reply == 0 || outcome.reply == answer_to(n)) << outcome.reply;
            EXPECT_TRUE(outcome.rc == 0 || outcome.rc == 33) << outcome.rc;
        }
    });
    senders.clear();
    done = true;
    canceller.join();
    waker.join();
    hang_up();
}

}  // namespace
