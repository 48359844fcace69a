#include "threads/self.h"

#include <atomic>

namespace oru::threads {
namespace {

constinit std::atomic<oru_thread_t> g_last_handle{0};

// Initial-exec, so that the first access in a thread never allocates.
constinit thread_local oru_thread_t t_self __attribute__((tls_model("initial-exec"))) = 0;

}  // namespace

oru_thread_t next_handle() {
    return g_last_handle.fetch_add(1, std::memory_order_relaxed) + 1;
}

oru_thread_t self() {
    if (t_self == 0) {
        t_self = next_handle();
    }
    return t_self;
}

void become(oru_thread_t handle) {
    t_self = handle;
}

}  // namespace oru::threads

using namespace oru::threads;

oru_thread_t oru_self_thread(void) {
    return self();
}

uint64_t oru_self_thread_id(void) {
    return self();
}

uint64_t oru_thread_id(oru_thread_t thread) {
    return thread;
}

// POSIX threads are ready when the process starts, whatever it has set up by itself.
int32_t oruapi_thread_library_init(int32_t /*have_setup*/) {
    return 0;
}
