#include "platform/arena.h"

#include <pthread.h>
#include <sys/mman.h>

#include <cstdlib>

#include "platform/sanitizers.h"

namespace oru::platform {

Arena g_arena;

namespace {

// Only addresses are taken, no memory. Where the process may not have so many, a smaller range
// does.
constexpr size_t kLargestArena = size_t{1} << 36;
constexpr size_t kSmallestArena = size_t{1} << 28;
constexpr size_t kMarkAlignment = 64;

pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
size_t g_used;

void *map(size_t size, int protection) {
    void *memory =
        mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

// The range of one size with its table; false with nothing kept.
bool try_reserve(size_t size) {
    void *base = map(size + kUnit, PROT_NONE);
    if (base == nullptr) {
        return false;
    }
    void *spans = map(size / kUnit * sizeof(std::atomic<Span *>), PROT_READ | PROT_WRITE);
    if (spans == nullptr) {
        munmap(base, size + kUnit);
        return false;
    }
    const auto address = reinterpret_cast<uintptr_t>(base);
    g_arena.spans = static_cast<std::atomic<Span *> *>(spans);
    g_arena.base = static_cast<char *>(base) + (kUnit - address % kUnit) % kUnit;
    g_arena.size = size;
    add_leak_root(g_arena.base, size);
    return true;
}

size_t marks_size(uint64_t count) {
    return (count + kMarkAlignment - 1) / kMarkAlignment * kMarkAlignment;
}

// A run of units that nobody uses yet, made readable and writable.
char *take_units(size_t size) {
    if (size > g_arena.size - g_used) {
        return nullptr;
    }
    char *memory = g_arena.base + g_used;
    if (mprotect(memory, size, PROT_READ | PROT_WRITE) != 0) {
        return nullptr;
    }
    g_used += size;
    return memory;
}

void enter(Span *span, const char *memory, size_t size) {
    const auto first = static_cast<size_t>(memory - g_arena.base) / kUnit;
    for (size_t unit = first; unit < first + size / kUnit; unit++) {
        g_arena.spans[unit].store(span, std::memory_order_release);
    }
}

void lay_out(Span &span, const Pool *pool, char *memory, uint64_t stride, uint64_t count) {
    span = {.pool = pool,
            .marks = reinterpret_cast<uint8_t *>(memory),
            .elements = memory + marks_size(count),
            .bytes = stride * count,
            .stride = stride,
            .inverse = UINT64_MAX / stride + 1,
            .count = count,
            .older = nullptr};
    poison(span.elements, span.bytes);
}

}  // namespace

bool reserve_arena() {
    pthread_mutex_lock(&g_lock);
    for (size_t size = kLargestArena; g_arena.size == 0 && size >= kSmallestArena; size /= 2) {
        try_reserve(size);
    }
    const bool reserved = g_arena.size != 0;
    pthread_mutex_unlock(&g_lock);
    return reserved;
}

size_t span_size(uint64_t stride, uint64_t count) {
    if (count > kLargestArena / stride) {
        return 0;
    }
    const size_t size = marks_size(count) + stride * count;
    return (size + kUnit - 1) / kUnit * kUnit;
}

Span *make_span(const Pool *pool, uint64_t stride, uint64_t count) {
    auto *span = static_cast<Span *>(malloc(sizeof(Span)));
    if (span == nullptr) {
        return nullptr;
    }
    const size_t size = span_size(stride, count);
    pthread_mutex_lock(&g_lock);
    char *memory = size == 0 ? nullptr : take_units(size);
    if (memory != nullptr) {
        lay_out(*span, pool, memory, stride, count);
        enter(span, memory, size);
    }
    pthread_mutex_unlock(&g_lock);
    if (memory == nullptr) {
        free(span);
        return nullptr;
    }
    return span;
}

}  // namespace oru::platform
