// The address range that all pools live in. It is reserved once and made usable span by span, so
// that the span of any address is found with one table look-up, foreign addresses included.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace oru::platform {

struct Pool;

inline constexpr size_t kUnit = size_t{1} << 16;

// Memory of one pool: marks of the elements first, then the elements. A mark is 1 while its element
// is taken; elements that were never handed out have 0.
struct Span {
    const Pool *pool;
    uint8_t *marks;
    char *elements;
    size_t bytes;      // of all elements
    uint64_t stride;   // bytes from element to element
    uint64_t inverse;  // 2^64 divided by the stride, rounded up
    uint64_t count;
    const Span *older;  // of the same pool, so that all are reachable from it
};

struct Arena {
    char *base;
    size_t size;
    std::atomic<Span *> *spans;  // one for each unit
};

extern Arena g_arena __attribute__((visibility("hidden")));

// The span that an address lies in, or null.
inline Span *span_of(const void *address) {
    const size_t offset =
        reinterpret_cast<uintptr_t>(address) - reinterpret_cast<uintptr_t>(g_arena.base);
    if (offset >= g_arena.size) {
        return nullptr;
    }
    return g_arena.spans[offset / kUnit].load(std::memory_order_acquire);
}

// Reserves the range on first use. False when the process may not have it.
bool reserve_arena();

// Makes a span of `count` elements of `stride` bytes; null when memory or the range is used up.
Span *make_span(const Pool *pool, uint64_t stride, uint64_t count);

// Bytes that a span of so many elements takes, whole units; 0 when that is too much for any span.
size_t span_size(uint64_t stride, uint64_t count);

}  // namespace oru::platform
