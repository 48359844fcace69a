#include <poll.h>
#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>

#include "support.h"

namespace oru::threads::test {
namespace {

class Pipe {
  public:
    Pipe() { EXPECT_EQ(pipe(ends_), 0); }
    ~Pipe() {
        close(ends_[0]);
        close(ends_[1]);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    void write_byte() const { EXPECT_EQ(write(ends_[1], "x", 1), 1); }
    pollfd readable() const { return {ends_[0], POLLIN, 0}; }

  private:
    int ends_[2];
};

volatile sig_atomic_t g_alarms = 0;

// Interrupts the process every 5 ms for as long as it lives, without SA_RESTART.
class Interruptions {
  public:
    Interruptions() {
        g_alarms = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { g_alarms = g_alarms + 1; };
        EXPECT_EQ(sigaction(SIGALRM, &action, &before_), 0);
        set_interval(5000);
    }
    ~Interruptions() {
        set_interval(0);
        sigaction(SIGALRM, &before_, nullptr);
    }
    Interruptions(const Interruptions &) = delete;
    Interruptions &operator=(const Interruptions &) = delete;

  private:
    static void set_interval(suseconds_t microseconds) {
        const itimerval timer{{0, microseconds}, {0, microseconds}};
        EXPECT_EQ(setitimer(ITIMER_REAL, &timer, nullptr), 0);
    }
    struct sigaction before_ {};
};

TEST(ThreadYield, AlwaysGivesZero) {
    EXPECT_EQ(oru_thread_yield(), 0);
    EXPECT_EQ(oru_thread_may_yield(), 0);
}

TEST(ThreadSleep, TakesAtLeastItsTime) {
    EXPECT_GE(elapsed_ms([] { EXPECT_EQ(oru_thread_sleep(40), 0); }), 40);
    EXPECT_EQ(oru_thread_sleep(0), 0);
}

TEST(ThreadSleep, NegativeTimeGives22) {
    EXPECT_EQ(oru_thread_sleep(-1), 22);
    EXPECT_EQ(oru_thread_sleep(INT64_MIN), 22);
}

TEST(ThreadSleep, InterruptionsDoNotShortenIt) {
    const Interruptions interruptions;
    EXPECT_GE(elapsed_ms([] { EXPECT_EQ(oru_thread_sleep(60), 0); }), 60);
    EXPECT_GT(g_alarms, 0);
}

TEST(ThreadPoll, ReadyDescriptorGivesZeroWithItsEvents) {
    const Pipe silent;
    const Pipe spoken;
    spoken.write_byte();
    pollfd fds[] = {silent.readable(), spoken.readable()};
    EXPECT_EQ(oru_thread_poll(fds, 2, 1000), 0);
    EXPECT_EQ(fds[0].revents, 0);
    EXPECT_EQ(fds[1].revents, POLLIN);
    EXPECT_EQ(oru_thread_poll(fds, 1, 0), 110);
}

TEST(ThreadPoll, RunsOutOfTimeWith110) {
    const Pipe silent;
    pollfd fd = silent.readable();
    EXPECT_GE(elapsed_ms([&] { EXPECT_EQ(oru_thread_poll(&fd, 1, 40), 110); }), 40);
    EXPECT_EQ(fd.revents, 0);
}

TEST(ThreadPoll, NegativeTimeWaitsForTheEvent) {
    const Pipe pipe;
    const Thread writer([&] {
        EXPECT_EQ(oru_thread_sleep(20), 0);
        pipe.write_byte();
    });
    pollfd fd = pipe.readable();
    EXPECT_EQ(oru_thread_poll(&fd, 1, -1), 0);
    EXPECT_EQ(fd.revents, POLLIN);
}

TEST(ThreadPoll, LongestTimeWaitsForTheEventToo) {
    const Pipe pipe;
    const Thread writer([&] {
        EXPECT_EQ(oru_thread_sleep(20), 0);
        pipe.write_byte();
    });
    pollfd fd = pipe.readable();
    EXPECT_EQ(oru_thread_poll(&fd, 1, INT64_MAX), 0);
    EXPECT_EQ(fd.revents, POLLIN);
}

TEST(ThreadPoll, WithoutDescriptorsIsASleep) {
    EXPECT_GE(elapsed_ms([] { EXPECT_EQ(oru_thread_poll(nullptr, 0, 30), 110); }), 30);
    EXPECT_EQ(oru_thread_poll(nullptr, 0, 0), 110);
}

TEST(ThreadPoll, ImpossibleArgumentsGive22) {
    const Pipe pipe;
    pollfd fd = pipe.readable();
    EXPECT_EQ(oru_thread_poll(nullptr, 1, 10), 22);
    EXPECT_EQ(oru_thread_poll(nullptr, 0, -1), 22);
    EXPECT_EQ(oru_thread_poll(&fd, 0, -1), 22);
}

TEST(ThreadPoll, InterruptionsNeitherEndNorProlongIt) {
    const Pipe silent;
    const Interruptions interruptions;
    pollfd fd = silent.readable();
    // Waits that began anew with each interruption would never come to their end.
    EXPECT_GE(elapsed_ms([&] { EXPECT_EQ(oru_thread_poll(&fd, 1, 60), 110); }), 60);
    EXPECT_GT(g_alarms, 0);
}

}  // namespace
}  // namespace oru::threads::test
