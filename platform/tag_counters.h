// Counts of blocks and bytes per tag. A tag gets a small number, its slot, on first use. Each
// thread counts in a table of its own; sums are made when somebody asks.
#pragma once

#include <atomic>
#include <cstdint>

#include "oruplatform/poolheap.h"
#include "platform/relaxed.h"
#include "platform/thread_block.h"

namespace oru::platform {

// Slot 0 is that of all tags that found no slot of their own.
inline constexpr uint32_t kTagSlots = POOLHEAP_MAX_TAGS + 1;
inline constexpr uint32_t kTagIndexSize = 4 * kTagSlots;
inline constexpr uint32_t kTagsPerPage = 64;

struct TagCounters {
    OwnedCounter<uint64_t> taken;
    OwnedCounter<uint64_t> given_back;
    OwnedCounter<int64_t> bytes;  // taken less given back, by this thread
    OwnedCounter<int64_t> told;   // `bytes` as far as the shared peak has heard of them
    OwnedCounter<int64_t> high;   // highest `bytes` since then
};

struct TagPage {
    TagCounters counters[kTagsPerPage];
};

struct ThreadTags {
    ThreadTags *before;
    ThreadTags *after;
    std::atomic<TagPage *> pages[kTagSlots / kTagsPerPage];
};

// Entries are a tag in the upper half and its slot in the lower, 0 where there is none.
extern std::atomic<uint64_t> g_tag_index[kTagIndexSize] __attribute__((visibility("hidden")));
extern uint32_t g_slot_tags[kTagSlots] __attribute__((visibility("hidden")));

uint32_t add_tag_slot(uint32_t tag);
TagCounters *make_counters(uint32_t slot);
void tell_peak(uint32_t slot, TagCounters &counters);
void count_shared(uint32_t slot, int64_t blocks, int64_t bytes);

inline uint32_t first_tag_place(uint32_t tag) {
    return (tag * 0x9E3779B1u) >> 20;
}
static_assert(kTagIndexSize == 1u << 12, "first_tag_place gives twelve bits");

// The slot of a tag that was used before, or 0.
inline uint32_t find_tag_slot(uint32_t tag) {
    for (uint32_t at = first_tag_place(tag);; at = (at + 1) % kTagIndexSize) {
        const uint64_t entry = g_tag_index[at].load(std::memory_order_acquire);
        if (entry == 0 || entry >> 32 == tag) {
            return static_cast<uint32_t>(entry);
        }
    }
}

inline uint32_t tag_slot(uint32_t tag) {
    const uint32_t slot = find_tag_slot(tag);
    return slot != 0 ? slot : add_tag_slot(tag);
}

// The calling thread's counters; null when there is no memory for them.
inline TagCounters *counters_of(uint32_t slot) {
    if (ThreadTags *tags = t_block.tags; tags != nullptr) {
        TagPage *page = tags->pages[slot / kTagsPerPage].load(std::memory_order_relaxed);
        if (page != nullptr) {
            return &page->counters[slot % kTagsPerPage];
        }
    }
    return make_counters(slot);
}

// `blocks` is 0 when a block only changes its size.
inline void count_taken(uint32_t slot, size_t size, uint64_t blocks = 1) {
    TagCounters *counters = counters_of(slot);
    if (counters == nullptr) {
        count_shared(slot, static_cast<int64_t>(blocks), static_cast<int64_t>(size));
        return;
    }
    counters->taken.add(blocks);
    counters->bytes.add(static_cast<int64_t>(size));
    const int64_t bytes = counters->bytes.get();
    if (bytes > counters->high.get()) {
        counters->high.set(bytes);
        if (bytes - counters->told.get() > POOLHEAP_PEAK_SLACK) {
            tell_peak(slot, *counters);
        }
    }
}

inline void count_given_back(uint32_t slot, size_t size, uint64_t blocks = 1) {
    TagCounters *counters = counters_of(slot);
    if (counters == nullptr) {
        count_shared(slot, -static_cast<int64_t>(blocks), -static_cast<int64_t>(size));
        return;
    }
    counters->given_back.add(blocks);
    counters->bytes.add(-static_cast<int64_t>(size));
    if (counters->told.get() - counters->bytes.get() > POOLHEAP_PEAK_SLACK) {
        tell_peak(slot, *counters);
    }
}

// Sums of one slot over all threads, living and ended.
poolheap_stats_t slot_stats(uint32_t slot);

// How many slots are in use; the tags of slots from 1 on stand in `g_slot_tags`.
uint32_t slot_count();

}  // namespace oru::platform
