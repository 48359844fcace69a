// The address range that all pools live in, and the register of their live elements.
//
// The range is reserved once and made usable from the front, span by span. For every 16 bytes of it
// the register holds one number: that of the pool whose live element begins there, 0 for all other
// places. So the owner of any address, exact to the byte, is one look-up away.
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace oru::platform {

inline constexpr size_t kGranule = 16;  // elements are aligned to it
inline constexpr uint32_t kMaxOwner = UINT16_MAX;

struct Arena {
    uintptr_t base;
    // The register, moved so that the entry of an element is found by its address alone.
    uintptr_t owners_by_address;
    std::atomic<size_t> usable_granules;
};

extern Arena g_arena __attribute__((visibility("hidden")));

// The register's entry of an address at which an element may begin.
inline uint16_t *owner_of_element(const void *element) {
    return reinterpret_cast<uint16_t *>(g_arena.owners_by_address +
                                        reinterpret_cast<uintptr_t>(element) / kGranule *
                                            sizeof(uint16_t));
}

inline bool may_begin_element(const void *address) {
    const size_t offset = reinterpret_cast<uintptr_t>(address) - g_arena.base;
    // An address off the granules gets its low bits on top, and so a number beyond all.
    return std::rotr(offset, std::countr_zero(kGranule)) <
           g_arena.usable_granules.load(std::memory_order_relaxed);
}

// Reserves the range on first use. False when the process may not have it.
bool reserve_arena();

// Makes `size` bytes of the range usable, aligned to a page; null when memory or range is used up.
char *make_span(size_t size);

// The size that a span is rounded up to; 0 when the range can never hold it.
size_t span_size(uint64_t stride, uint64_t count);

}  // namespace oru::platform
