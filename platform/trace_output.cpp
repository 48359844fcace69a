#include "platform/trace_output.h"

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <string.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "platform/thread_block.h"

namespace oru::platform {

namespace {

struct Sink {
    tracelet_sink_fn fn;
    void *context;
};

// Read-locked while the sink runs, so that nobody can take its context away under it.
pthread_rwlock_t g_sink_lock = PTHREAD_RWLOCK_INITIALIZER;
Sink g_sink{};
std::atomic<bool> g_sink_set{false};

int open_output() {
    const char *name = secure_getenv("ORU_TRACE_FILE");
    if (name == nullptr || *name == '\0') {
        return STDERR_FILENO;
    }
    const int fd = open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0640);
    return fd < 0 ? STDERR_FILENO : fd;
}

// The first line opens the file; who comes second with it closes its own again.
int output() {
    static std::atomic<int> fd{-1};
    int seen = fd.load(std::memory_order_acquire);
    if (seen >= 0) {
        return seen;
    }
    const int opened = open_output();
    if (fd.compare_exchange_strong(seen, opened)) {
        return opened;
    }
    if (opened != STDERR_FILENO) {
        close(opened);
    }
    return seen;
}

iovec piece(const char *text, size_t length) {
    return {.iov_base = const_cast<char *>(text), .iov_len = length};
}

// One call a line as a rule, so that lines of several threads do not mix.
void write_pieces(int fd, iovec *pieces, int count) {
    while (count > 0) {
        const ssize_t written = writev(fd, pieces, count);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        auto left = static_cast<size_t>(written);
        while (count > 0 && left >= pieces->iov_len) {
            left -= pieces->iov_len;
            pieces++;
            count--;
        }
        if (count > 0) {
            pieces->iov_base = static_cast<char *>(pieces->iov_base) + left;
            pieces->iov_len -= left;
        }
    }
}

size_t bounded(int printed, size_t capacity) {
    if (printed < 0) {
        return 0;
    }
    const auto length = static_cast<size_t>(printed);
    return length < capacity ? length : capacity - 1;
}

size_t print_head(char *head, size_t capacity, const TraceRecord &record) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc{};
    gmtime_r(&now.tv_sec, &utc);
    char stamp[32];
    strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
    return bounded(snprintf(head, capacity, "%s.%06ldZ [%d] L%u %s: ", stamp, now.tv_nsec / 1000,
                            static_cast<int>(gettid()), record.level, record.module),
                   capacity);
}

size_t print_place(char *tail, size_t capacity, const tracelet_place_t *place) {
    if (place == nullptr) {
        return 0;
    }
    const char *file = place->file != nullptr ? place->file : "?";
    const bool has_element = place->element != nullptr;
    return bounded(snprintf(tail, capacity, " (%s:%d%s%s)", file, place->line,
                            has_element ? ": " : "", has_element ? place->element : ""),
                   capacity);
}

void write_line(const TraceRecord &record) {
    char head[128];
    char tail[512];
    size_t text_length = strlen(record.text);
    if (text_length > 0 && record.text[text_length - 1] == '\n') {
        text_length--;
    }
    iovec pieces[] = {piece(head, print_head(head, sizeof head, record)),
                      piece(record.text, text_length),
                      piece(tail, print_place(tail, sizeof tail, record.place)), piece("\n", 1)};
    const int saved_errno = errno;
    write_pieces(output(), pieces, 4);
    errno = saved_errno;
}

// A sink that sends messages itself must not come round to itself.
bool hand_to_sink(const TraceRecord &record) {
    if (!g_sink_set.load(std::memory_order_acquire) || t_block.in_sink) {
        return false;
    }
    t_block.in_sink = true;
    pthread_rwlock_rdlock(&g_sink_lock);
    const Sink sink = g_sink;
    if (sink.fn != nullptr) {
        sink.fn(sink.context, record.module, record.level, record.text, record.place);
    }
    pthread_rwlock_unlock(&g_sink_lock);
    t_block.in_sink = false;
    return sink.fn != nullptr;
}

}  // namespace

void record(const TraceRecord &record) {
    const bool taken = hand_to_sink(record);
    if (!taken || record.level == 0) {
        write_line(record);
    }
}

}  // namespace oru::platform

using namespace oru::platform;

void tracelet_set_sink(tracelet_sink_fn sink, void *context) {
    pthread_rwlock_wrlock(&g_sink_lock);
    g_sink = {.fn = sink, .context = context};
    g_sink_set.store(sink != nullptr, std::memory_order_release);
    pthread_rwlock_unlock(&g_sink_lock);
}
