// The part of the pools that works under a lock.
#include <sys/mman.h>

#include <cstdlib>
#include <cstring>

#include "platform/chunk_pool.h"
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
    auto *wider = static_cast<FreeElement *>(realloc(pool.depot, capacity * sizeof(FreeElement)));
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
    Span *span = make_span(&pool, pool.stride, pool.span_elements);
    if (span == nullptr) {
        return false;
    }
    span->older = pool.span;
    pool.span = span;
    pool.cut = 0;
    return true;
}

// Cuts a new element. A slab that no span could be made for stays promised, for a later try.
bool cut_element(Pool &pool, FreeElement &out) {
    if (pool.fresh == 0 && !add_slab(pool)) {
        return false;
    }
    if ((pool.span == nullptr || pool.cut == pool.span->count) && !next_span(pool)) {
        return false;
    }
    out = {.element = pool.span->elements + pool.cut * pool.stride,
           .mark = pool.span->marks + pool.cut};
    pool.cut++;
    pool.fresh--;
    return true;
}

bool take_free(Pool &pool, FreeElement &out) {
    if (pool.depot_count == 0) {
        return cut_element(pool, out);
    }
    out = pool.depot[--pool.depot_count];
    return true;
}

// Fresh elements of a thread lie side by side, the lowest on top. A slab is not begun for stock.
void fill(Pool &pool, Magazine &magazine, uint32_t wanted) {
    FreeElement *out = magazine.elements + magazine.count;
    uint32_t got = 0;
    while (got < wanted && (got == 0 || pool.depot_count != 0 || pool.fresh != 0) &&
           take_free(pool, out[got])) {
        got++;
    }
    for (uint32_t i = 0; i < got / 2; i++) {
        const FreeElement swapped = out[i];
        out[i] = out[got - 1 - i];
        out[got - 1 - i] = swapped;
    }
    magazine.count += got;
}

void put_into_depot(Pool &pool, const FreeElement *elements, uint64_t count) {
    if (count != 0) {
        memcpy(pool.depot + pool.depot_count, elements, count * sizeof *elements);
        pool.depot_count += count;
    }
}

// The elements that came first go; those used last are still in the thread's cache.
void drain(Pool &pool, Magazine &magazine, uint32_t count) {
    put_into_depot(pool, magazine.elements, count);
    magazine.count -= count;
    memmove(magazine.elements, magazine.elements + count,
            magazine.count * sizeof *magazine.elements);
}

int64_t live_of(const Magazine &magazine) {
    return static_cast<int64_t>(magazine.takes.get() - magazine.returns.get());
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
    if (pool.index < kDirectPools) {
        return &t_block.magazines[pool.index];
    }
    const uint32_t index = pool.index - kDirectPools;
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
        put_into_depot(pool, magazine->elements, magazine->count);
        pool.past_takes += magazine->takes.get();
        pool.past_returns += magazine->returns.get();
        leave_list(pool, *magazine);
    }
    free(magazine);
}

void *hand_out_single(Pool &pool) {
    FreeElement taken;
    {
        const Locked locked(pool);
        if (!take_free(pool, taken)) {
            return nullptr;
        }
        pool.past_takes++;
        raise_peak(pool, ++pool.told);
    }
    __atomic_store_n(taken.mark, uint8_t{1}, __ATOMIC_RELAXED);
    unpoison(taken.element, pool.element_size);
    return taken.element;
}

}  // namespace

Magazine *find_magazine(const Pool &pool) {
    if (pool.index < kDirectPools) {
        return t_block.magazines[pool.index];
    }
    MoreMagazines *more = t_block.more_magazines;
    const uint32_t index = pool.index - kDirectPools;
    return more != nullptr && index < more->size ? more->at(index) : nullptr;
}

void *take_slowly(Pool &pool) {
    Magazine *magazine = find_magazine(pool);
    if (magazine == nullptr) {
        magazine = make_magazine(pool);
    }
    if (magazine == nullptr) {
        return hand_out_single(pool);
    }
    {
        const Locked locked(pool);
        tell_live(pool, *magazine);
        fill(pool, *magazine, (magazine->limit + 1) / 2);
        if (magazine->count == 0) {
            return nullptr;
        }
    }
    const FreeElement taken = magazine->elements[--magazine->count];
    magazine->takes.add(1);
    __atomic_store_n(taken.mark, uint8_t{1}, __ATOMIC_RELAXED);
    unpoison(taken.element, pool.element_size);
    return taken.element;
}

void give_back_slowly(Pool &pool, FreeElement element) {
    Magazine *magazine = find_magazine(pool);
    if (magazine == nullptr) {
        magazine = make_magazine(pool);
    }
    if (magazine == nullptr) {
        const Locked locked(pool);
        put_into_depot(pool, &element, 1);
        pool.past_returns++;
        pool.told--;
        return;
    }
    if (magazine->count >= magazine->limit) {
        const Locked locked(pool);
        tell_live(pool, *magazine);
        drain(pool, *magazine, (magazine->limit + 1) / 2);
    }
    magazine->elements[magazine->count++] = element;
    magazine->returns.add(1);
}

void count_refusal(Pool &pool) {
    const Locked locked(pool);
    pool.refused++;
}

bool preallocate(Pool &pool) {
    const Locked locked(pool);
    if (!add_slab(pool) || !next_span(pool)) {
        return false;
    }
    madvise(pool.span->marks, span_size(pool.stride, pool.span_elements), MADV_POPULATE_WRITE);
    return true;
}

chunk_stats_t pool_stats(const Pool &pool) {
    const Locked locked(pool);
    uint64_t takes = pool.past_takes;
    uint64_t returns = pool.past_returns;
    for (const Magazine *magazine = pool.magazines; magazine != nullptr;
         magazine = magazine->after) {
        takes += magazine->takes.get();
        returns += magazine->returns.get();
    }
    const uint64_t live = takes - returns;
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
