// The part of the pools that works under a lock.
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/chunk_pool.h"
#include "platform/failure_hook.h"
#include "platform/sanitizers.h"

namespace oru::platform {

// Magazines of pools beyond the direct ones, by index; the pointers stand behind this head.
struct alignas(Magazine *) MoreMagazines {
    uint32_t size;

    Magazine *&at(uint32_t index) { return reinterpret_cast<Magazine **>(this + 1)[index]; }
};
static_assert(sizeof(MoreMagazines) % alignof(Magazine *) == 0);

namespace {

struct Locked {
    explicit Locked(const Pool &locked) : pool(locked) { pthread_mutex_lock(&pool.lock); }
    ~Locked() { pthread_mutex_unlock(&pool.lock); }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;
    const Pool &pool;
};

// ---- Elements, under the pool's lock ----

// The depot never holds more than the pool has elements, so that returning needs no memory.
bool widen_depot(Pool &pool, uint64_t elements) {
    if (elements <= pool.depot_capacity) {
        return true;
    }
    const uint64_t doubled = pool.depot_capacity * 2;
    const uint64_t capacity = elements < doubled ? doubled : elements;
    auto *wider = static_cast<void **>(realloc(pool.depot, capacity * sizeof(void *)));
    if (wider == nullptr) {
        return false;
    }
    pool.depot = wider;
    pool.depot_capacity = capacity;
    return true;
}

bool add_slab(Pool &pool) {
    if ((pool.max_slabs != 0 && pool.slabs == pool.max_slabs) ||
        !widen_depot(pool, (pool.slabs + 1) * pool.slab_count)) {
        return false;
    }
    pool.slabs++;
    pool.fresh += pool.slab_count;
    return true;
}

bool next_span(Pool &pool) {
    char *span = make_span(pool.span_size);
    if (span == nullptr) {
        return false;
    }
    pool.cut = span;
    pool.cut_end = span + pool.span_size / pool.stride * pool.stride;
    return true;
}

// Cuts a new element. A slab that no span could be made for stays promised, for a later try.
void *cut_element(Pool &pool) {
    if ((pool.fresh == 0 && !add_slab(pool)) || (pool.cut == pool.cut_end && !next_span(pool))) {
        return nullptr;
    }
    void *element = pool.cut;
    pool.cut += pool.stride;
    pool.fresh--;
    return element;
}

void *take_free(Pool &pool) {
    return pool.depot_count != 0 ? pool.depot[--pool.depot_count] : cut_element(pool);
}

// Fresh elements of a thread lie side by side, the lowest on top. A slab is not begun for stock.
void fill(Pool &pool, Magazine &magazine, uint32_t wanted) {
    void **out = magazine.elements;
    uint32_t got = 0;
    while (got < wanted && (got == 0 || pool.depot_count != 0 || pool.fresh != 0) &&
           (out[got] = take_free(pool)) != nullptr) {
        got++;
    }
    std::reverse(out, out + got);
    magazine.count.set(got);
    magazine.exchanged += got;
}

void put_into_depot(Pool &pool, void *const *elements, uint64_t count) {
    if (count != 0) {
        memcpy(pool.depot + pool.depot_count, elements, count * sizeof *elements);
        pool.depot_count += count;
    }
}

// The elements that came first go; those used last are still in the thread's cache.
void drain(Pool &pool, Magazine &magazine, uint32_t count) {
    const uint32_t kept = magazine.count.get() - count;
    put_into_depot(pool, magazine.elements, count);
    memmove(magazine.elements, magazine.elements + count, kept * sizeof *magazine.elements);
    magazine.count.set(kept);
    magazine.exchanged -= count;
}

// What the thread took and did not return, seen from what it has exchanged and still keeps.
int64_t live_of(const Magazine &magazine) {
    const int64_t kept = magazine.count.get() + (magazine.last.get() != nullptr ? 1 : 0);
    return magazine.exchanged - kept;
}

void raise_peak(Pool &pool, int64_t live) {
    if (live > pool.peak) {
        pool.peak = live;
    }
}

void tell_live(Pool &pool, Magazine &magazine) {
    const int64_t live = live_of(magazine);
    pool.told += live - magazine.told;
    magazine.told = live;
    raise_peak(pool, pool.told);
}

// ---- Magazines ----

// Where the thread keeps its magazine of the pool; null when there is no memory for that.
Magazine **magazine_place(const Pool &pool) {
    if (pool.place < kDirectPools) {
        return &t_block.magazines[pool.place];
    }
    const uint32_t index = pool.owner;
    MoreMagazines *more = t_block.more_magazines;
    if (more == nullptr || index >= more->size) {
        const uint32_t size = (index / 64 + 1) * 64;
        const uint32_t old_size = more == nullptr ? 0 : more->size;
        more = static_cast<MoreMagazines *>(
            realloc(more, sizeof(MoreMagazines) + size * sizeof(Magazine *)));
        if (more == nullptr) {
            return nullptr;
        }
        memset(&more->at(old_size), 0, (size - old_size) * sizeof(Magazine *));
        more->size = size;
        t_block.more_magazines = more;
    }
    return &more->at(index);
}

void enter_list(Pool &pool, Magazine *magazine) {
    const Locked locked(pool);
    magazine->after = pool.magazines;
    if (pool.magazines != nullptr) {
        pool.magazines->before = magazine;
    }
    pool.magazines = magazine;
}

// Null when the thread can have none: it then goes to the depot each time.
Magazine *make_magazine(Pool &pool) {
    if (!arm_thread_block()) {
        return nullptr;
    }
    Magazine **place = magazine_place(pool);
    auto *magazine =
        place == nullptr ? nullptr : static_cast<Magazine *>(calloc(1, sizeof(Magazine)));
    if (magazine == nullptr) {
        return nullptr;
    }
    magazine->pool = &pool;
    magazine->limit = pool.magazine_limit;
    enter_list(pool, magazine);
    *place = magazine;
    return magazine;
}

void leave_list(Pool &pool, const Magazine &magazine) {
    (magazine.before == nullptr ? pool.magazines : magazine.before->after) = magazine.after;
    if (magazine.after != nullptr) {
        magazine.after->before = magazine.before;
    }
}

void release_magazine(Magazine *&place) {
    Magazine *magazine = place;
    if (magazine == nullptr) {
        return;
    }
    place = nullptr;
    Pool &pool = *magazine->pool;
    {
        const Locked locked(pool);
        tell_live(pool, *magazine);
        pool.past_live += live_of(*magazine);
        pool.past_takes += magazine->takes.get();
        put_into_depot(pool, magazine->elements, magazine->count.get());
        void *last = magazine->last.get();
        put_into_depot(pool, &last, last != nullptr ? 1 : 0);
        leave_list(pool, *magazine);
    }
    free(magazine);
}

// The calling thread's magazine, made if need be; null when it can have none.
Magazine *magazine_of(Pool &pool) {
    Magazine **place = magazine_place(pool);
    return place != nullptr && *place != nullptr ? *place : make_magazine(pool);
}

void *take_without_magazine(Pool &pool) {
    const Locked locked(pool);
    void *element = take_free(pool);
    if (element != nullptr) {
        pool.past_takes++;
        pool.past_live++;
        raise_peak(pool, ++pool.told);
    }
    return element;
}

void *take_with_magazine(Pool &pool, Magazine &magazine) {
    void *element = pop(magazine);
    if (element != nullptr) {
        return element;
    }
    {
        const Locked locked(pool);
        tell_live(pool, magazine);
        fill(pool, magazine, (magazine.limit + 1) / 2);
    }
    return pop(magazine);
}

}  // namespace

void *take_slowly(Pool &pool) {
    if (must_fail(pool.tag)) {
        return nullptr;
    }
    Magazine *magazine = magazine_of(pool);
    void *element =
        magazine != nullptr ? take_with_magazine(pool, *magazine) : take_without_magazine(pool);
    return element == nullptr ? nullptr : mark_taken(pool, element);
}

int32_t give_back_slowly(Pool &pool, void *element) {
    Magazine *magazine = magazine_of(pool);
    if (magazine == nullptr) {
        const Locked locked(pool);
        put_into_depot(pool, &element, 1);
        pool.past_live--;
        pool.told--;
        return 1;
    }
    if (!push(*magazine, element)) {
        {
            const Locked locked(pool);
            tell_live(pool, *magazine);
            drain(pool, *magazine, (magazine->limit + 1) / 2);
        }
        push(*magazine, element);
    }
    return 1;
}

int32_t refuse(Pool &pool) {
    const Locked locked(pool);
    pool.refused++;
    return 0;
}

bool preallocate(Pool &pool) {
    const Locked locked(pool);
    if (!add_slab(pool) || !next_span(pool)) {
        return false;
    }
    madvise(pool.cut, pool.slab_count * pool.stride, MADV_POPULATE_WRITE);
    return true;
}

chunk_stats_t pool_stats(const Pool &pool) {
    const Locked locked(pool);
    uint64_t takes = pool.past_takes;
    int64_t net = pool.past_live;
    for (const Magazine *magazine = pool.magazines; magazine != nullptr;
         magazine = magazine->after) {
        takes += magazine->takes.get();
        net += live_of(*magazine);
    }
    const auto live = static_cast<uint64_t>(net);
    const auto peak = static_cast<uint64_t>(pool.peak);
    return {.element_size = pool.element_size,
            .slab_count = pool.slab_count,
            .slabs = pool.slabs,
            .max_slabs = pool.max_slabs,
            .live = live,
            .peak = live > peak ? live : peak,
            .total_takes = takes,
            .refused = pool.refused,
            .tag = pool.tag};
}

void release_magazines(ThreadBlock &block) {
    for (Magazine *&place : block.magazines) {
        release_magazine(place);
    }
    MoreMagazines *more = block.more_magazines;
    block.more_magazines = nullptr;
    for (uint32_t i = 0; more != nullptr && i < more->size; i++) {
        release_magazine(more->at(i));
    }
    free(more);
}

}  // namespace oru::platform
