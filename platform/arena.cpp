#include "platform/arena.h"

#include <pthread.h>
#include <sys/mman.h>

#include "platform/sanitizers.h"

namespace oru::platform {

Arena g_arena;

namespace {

// Only addresses are taken, no memory. Where the process may not have so many, a smaller range
// does.
constexpr size_t kLargestArena = size_t{1} << 36;
constexpr size_t kSmallestArena = size_t{1} << 28;

// A span of this size has an eighth of it as its part of the register, whole pages of any machine.
constexpr size_t kSpanUnit = size_t{1} << 19;
constexpr size_t kRegisterShare = kGranule / sizeof(uint16_t);

// The processor takes a store and a load at the same place of two pages for the same address at
// first and then stalls. An element at the start of a span and its entry would be such a pair,
// which doubles the time of a take and return; so the register begins off the start of a page.
constexpr size_t kRegisterShift = 2048 + 64;

pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
size_t g_size;
size_t g_used;
char *g_register;

char *reserve(size_t size) {
    void *memory =
        mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<char *>(memory);
}

// The range of one size with its register; false with nothing kept.
bool try_reserve(size_t size) {
    char *range = reserve(size);
    if (range == nullptr) {
        return false;
    }
    g_register = reserve(size / kRegisterShare + kRegisterShift);
    if (g_register == nullptr) {
        munmap(range, size);
        return false;
    }
    g_arena.base = reinterpret_cast<uintptr_t>(range);
    g_arena.owners_by_address =
        reinterpret_cast<uintptr_t>(g_register) + kRegisterShift - g_arena.base / kRegisterShare;
    g_size = size;
    add_leak_root(range, size);
    return true;
}

bool make_usable(char *memory, size_t size) {
    return mprotect(memory, size, PROT_READ | PROT_WRITE) == 0;
}

char *take_front(size_t size) {
    if (size == 0 || size > g_size - g_used) {
        return nullptr;
    }
    auto *memory = reinterpret_cast<char *>(g_arena.base) + g_used;
    if (!make_usable(g_register + g_used / kRegisterShare,
                     size / kRegisterShare + kRegisterShift) ||
        !make_usable(memory, size)) {
        return nullptr;
    }
    poison(memory, size);
    g_used += size;
    g_arena.usable_granules.store(g_used / kGranule, std::memory_order_relaxed);
    return memory;
}

}  // namespace

bool reserve_arena() {
    pthread_mutex_lock(&g_lock);
    for (size_t size = kLargestArena; g_size == 0 && size >= kSmallestArena; size /= 2) {
        try_reserve(size);
    }
    const bool reserved = g_size != 0;
    pthread_mutex_unlock(&g_lock);
    return reserved;
}

size_t span_size(uint64_t stride, uint64_t count) {
    if (count > g_size / stride) {
        return 0;
    }
    return (stride * count + kSpanUnit - 1) / kSpanUnit * kSpanUnit;
}

char *make_span(size_t size) {
    pthread_mutex_lock(&g_lock);
    char *memory = take_front(size);
    pthread_mutex_unlock(&g_lock);
    return memory;
}

}  // namespace oru::platform
