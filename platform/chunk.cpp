#include "oruplatform/chunk.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/chunk_pool.h"
#include "platform/codes.h"
#include "platform/failure_hook.h"
#include "platform/sanitizers.h"

namespace oru::platform {

namespace {

std::atomic<Pool *> g_pools{nullptr};
std::atomic<uint32_t> g_pool_count{0};

// The checked builds keep a poisoned gap behind each element.
uint64_t stride_for(size_t element_size) {
    const uint64_t rounded = (element_size + kGranule - 1) / kGranule * kGranule;
    return kWithAsan ? rounded + kGranule : rounded;
}

uint64_t max_slabs_for(uintptr_t flags) {
    if ((flags & CHUNK_FLAG_GROW) == 0) {
        return 1;
    }
    return (flags & CHUNK_FLAG_MAX_SLABS_MASK) >> CHUNK_FLAG_MAX_SLABS_SHIFT;
}

// Of a pool with a cap, threads keep at most an eighth each, so that a few of them can share it.
uint32_t magazine_limit_for(uint64_t slab_count, uint64_t max_slabs) {
    if (max_slabs == 0 || slab_count >= CHUNK_MAGAZINE_SIZE * uint64_t{8}) {
        return CHUNK_MAGAZINE_SIZE;
    }
    const uint64_t share = slab_count * max_slabs / 8;
    return share < 1
               ? 1
               : static_cast<uint32_t>(share < CHUNK_MAGAZINE_SIZE ? share : CHUNK_MAGAZINE_SIZE);
}

Pool *make_pool(size_t element_size, uint64_t count, uintptr_t flags, uint32_t tag) {
    void *memory = aligned_alloc(alignof(Pool), sizeof(Pool));
    if (memory == nullptr) {
        return nullptr;
    }
    auto *pool = new (memory) Pool{};
    pool->stride = stride_for(element_size);
    pool->tag = tag;
    pool->element_size = element_size;
    pool->slab_count = count;
    pool->max_slabs = max_slabs_for(flags);
    pool->span_size = span_size(pool->stride, count);
    pool->magazine_limit = magazine_limit_for(count, pool->max_slabs);
    pthread_mutex_init(&pool->lock, nullptr);
    return pool;
}

// Gives the pool its number; false when there is none left.
bool publish(Pool *pool) {
    const uint32_t number = g_pool_count.fetch_add(1) + 1;
    if (number > kMaxOwner) {
        g_pool_count.fetch_sub(1);
        return false;
    }
    pool->owner = static_cast<uint16_t>(number);
    pool->place = number <= kDirectPools ? number - 1 : kDirectPools;
    pool->next = g_pools.load();
    while (!g_pools.compare_exchange_weak(pool->next, pool)) {
    }
    return true;
}

}  // namespace

const Pool *first_pool() {
    return g_pools.load(std::memory_order_acquire);
}

const Pool *next_pool(const Pool &pool) {
    return pool.next;
}

}  // namespace oru::platform

using namespace oru::platform;

void *chunk_create_poolheap(size_t element_size, intptr_t count, uintptr_t flags, int32_t,
                            uint32_t tag) {
    if (element_size == 0 || element_size > CHUNK_MAX_ELEMENT_SIZE || count < 1 || fails_tag(tag) ||
        !reserve_arena()) {
        return nullptr;
    }
    const auto slab_count = static_cast<uint64_t>(count);
    if (span_size(stride_for(element_size), slab_count) == 0) {
        return nullptr;
    }
    Pool *pool = make_pool(element_size, slab_count, flags, tag);
    if (pool != nullptr &&
        (((flags & CHUNK_FLAG_PREALLOCATE) != 0 && !preallocate(*pool)) || !publish(pool))) {
        free(pool->depot);
        free(pool);
        return nullptr;
    }
    return pool;
}

// In both, what happens nearly always comes first and needs no stack.
void *chunk_malloc(void *handle) {
    if (handle == nullptr) [[unlikely]] {
        return nullptr;
    }
    Pool &pool = *static_cast<Pool *>(handle);
    Magazine *magazine = t_block.magazines[pool.place];
    if (failures_are_off() && magazine != nullptr) [[likely]] {
        if (void *element = pop(*magazine); element != nullptr) [[likely]] {
            return mark_taken(pool, element);
        }
    }
    return take_slowly(pool);
}

int32_t chunk_free(void *handle, void *element) {
    if (handle == nullptr) [[unlikely]] {
        return 0;
    }
    Pool &pool = *static_cast<Pool *>(handle);
    if (!may_begin_element(element)) [[unlikely]] {
        return refuse(pool);
    }
    uint16_t *owner = owner_of_element(element);
    if (__atomic_load_n(owner, __ATOMIC_RELAXED) != pool.owner) [[unlikely]] {
        return refuse(pool);
    }
    __atomic_store_n(owner, uint16_t{0}, __ATOMIC_RELAXED);
    poison(element, pool.element_size);
    Magazine *magazine = t_block.magazines[pool.place];
    if (magazine != nullptr && push(*magazine, element)) [[likely]] {
        return 1;
    }
    return give_back_slowly(pool, element);
}

int32_t chunk_pool_stats(void *pool, chunk_stats_t *out_stats) {
    if (pool == nullptr || out_stats == nullptr) {
        return kInvalid;
    }
    *out_stats = pool_stats(*static_cast<Pool *>(pool));
    return kOk;
}

uint64_t chunk_live_elements(void) {
    uint64_t live = 0;
    for (const Pool *pool = first_pool(); pool != nullptr; pool = next_pool(*pool)) {
        live += pool_stats(*pool).live;
    }
    return live;
}
