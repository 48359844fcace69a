#include "platform/tag_counters.h"

#include <pthread.h>

#include <cstdlib>

namespace oru::platform {

std::atomic<uint64_t> g_tag_index[kTagIndexSize];
uint32_t g_slot_tags[kTagSlots];

namespace {

// What threads that ended left, and what was counted without a table.
struct SharedCounters {
    SharedCounter<uint64_t> taken;
    SharedCounter<uint64_t> given_back;
    SharedCounter<int64_t> bytes;
    SharedCounter<int64_t> told;  // live bytes as far as threads have told them
    SharedCounter<int64_t> peak;
};

SharedCounters g_shared[kTagSlots];
std::atomic<uint32_t> g_slot_count{1};

// Held to add a slot, to enter or leave the list of threads, and to sum over it.
pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
ThreadTags *g_threads;

struct Locked {
    Locked() { pthread_mutex_lock(&g_lock); }
    ~Locked() { pthread_mutex_unlock(&g_lock); }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;
};

ThreadTags *make_thread_tags() {
    if (!arm_thread_block()) {
        return nullptr;
    }
    auto *tags = static_cast<ThreadTags *>(calloc(1, sizeof(ThreadTags)));
    if (tags == nullptr) {
        return nullptr;
    }
    const Locked locked;
    tags->after = g_threads;
    if (g_threads != nullptr) {
        g_threads->before = tags;
    }
    g_threads = tags;
    return tags;
}

void leave_list(ThreadTags &tags) {
    (tags.before == nullptr ? g_threads : tags.before->after) = tags.after;
    if (tags.after != nullptr) {
        tags.after->before = tags.before;
    }
}

void fold(uint32_t slot, TagCounters &counters) {
    SharedCounters &shared = g_shared[slot];
    tell_peak(slot, counters);
    shared.taken.add(counters.taken.get());
    shared.given_back.add(counters.given_back.get());
    shared.bytes.add(counters.bytes.get());
}

template <class Visit>
void for_each_page(ThreadTags &tags, Visit visit) {
    for (uint32_t index = 0; index < kTagSlots / kTagsPerPage; index++) {
        if (TagPage *page = tags.pages[index].load(std::memory_order_acquire); page != nullptr) {
            visit(index * kTagsPerPage, *page);
        }
    }
}

void add_thread(poolheap_stats_t &stats, int64_t &high, uint32_t slot, const ThreadTags &tags) {
    const TagPage *page = tags.pages[slot / kTagsPerPage].load(std::memory_order_acquire);
    if (page == nullptr) {
        return;
    }
    const TagCounters &counters = page->counters[slot % kTagsPerPage];
    stats.live_blocks += counters.taken.get() - counters.given_back.get();
    stats.live_bytes += static_cast<uint64_t>(counters.bytes.get());
    stats.total_blocks += counters.taken.get();
    high += counters.high.get() - counters.told.get();
}

}  // namespace

uint32_t add_tag_slot(uint32_t tag) {
    const Locked locked;
    if (const uint32_t found = find_tag_slot(tag); found != 0) {
        return found;
    }
    const uint32_t slot = g_slot_count.load();
    if (slot == kTagSlots) {
        return 0;
    }
    uint32_t at = first_tag_place(tag);
    while (g_tag_index[at].load() != 0) {
        at = (at + 1) % kTagIndexSize;
    }
    g_slot_tags[slot] = tag;
    g_slot_count.store(slot + 1);
    g_tag_index[at].store(uint64_t{tag} << 32 | slot, std::memory_order_release);
    return slot;
}

TagCounters *make_counters(uint32_t slot) {
    if (t_block.tags == nullptr) {
        t_block.tags = make_thread_tags();
    }
    if (t_block.tags == nullptr) {
        return nullptr;
    }
    auto *page = static_cast<TagPage *>(calloc(1, sizeof(TagPage)));
    if (page == nullptr) {
        return nullptr;
    }
    t_block.tags->pages[slot / kTagsPerPage].store(page, std::memory_order_release);
    return &page->counters[slot % kTagsPerPage];
}

void tell_peak(uint32_t slot, TagCounters &counters) {
    SharedCounters &shared = g_shared[slot];
    const int64_t bytes = counters.bytes.get();
    const int64_t told = counters.told.get();
    const int64_t of_others = shared.told.add(bytes - told) - bytes;
    shared.peak.raise_to(of_others + counters.high.get());
    counters.told.set(bytes);
    counters.high.set(bytes);
}

void count_shared(uint32_t slot, int64_t blocks, int64_t bytes) {
    SharedCounters &shared = g_shared[slot];
    if (blocks > 0) {
        shared.taken.add(1);
    } else if (blocks < 0) {
        shared.given_back.add(1);
    }
    shared.bytes.add(bytes);
    shared.peak.raise_to(shared.told.add(bytes));
}

void release_tags(ThreadBlock &block) {
    ThreadTags *tags = block.tags;
    if (tags == nullptr) {
        return;
    }
    block.tags = nullptr;
    {
        const Locked locked;
        for_each_page(*tags, [](uint32_t first_slot, TagPage &page) {
            for (uint32_t i = 0; i < kTagsPerPage; i++) {
                fold(first_slot + i, page.counters[i]);
            }
        });
        leave_list(*tags);
    }
    for_each_page(*tags, [](uint32_t, TagPage &page) { free(&page); });
    free(tags);
}

poolheap_stats_t slot_stats(uint32_t slot) {
    const Locked locked;
    const SharedCounters &shared = g_shared[slot];
    poolheap_stats_t stats{};
    int64_t high = shared.told.get();
    stats.live_blocks = shared.taken.get() - shared.given_back.get();
    stats.live_bytes = static_cast<uint64_t>(shared.bytes.get());
    stats.total_blocks = shared.taken.get();
    for (const ThreadTags *tags = g_threads; tags != nullptr; tags = tags->after) {
        add_thread(stats, high, slot, *tags);
    }
    const int64_t peak = shared.peak.get() > high ? shared.peak.get() : high;
    stats.peak_bytes = static_cast<uint64_t>(peak > 0 ? peak : 0);
    return stats;
}

uint32_t slot_count() {
    return g_slot_count.load();
}

}  // namespace oru::platform
