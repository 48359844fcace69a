// A pool and the magazines of its threads.
//
// The depot of a pool keeps free elements under a lock; each thread keeps up to a magazine full of
// them for itself. Half a magazine moves at a time. Elements that were never handed out are cut
// from the newest span on demand.
#pragma once

#include <pthread.h>

#include <cstdint>

#include "oruplatform/chunk.h"
#include "platform/arena.h"
#include "platform/relaxed.h"
#include "platform/thread_block.h"

namespace oru::platform {

// A free element and its mark, found once when it comes in.
struct FreeElement {
    void *element;
    uint8_t *mark;
};

struct Magazine {
    uint32_t count;
    uint32_t limit;  // elements that may be kept; a half of it is exchanged
    OwnedCounter<uint64_t> takes;
    OwnedCounter<uint64_t> returns;
    int64_t told;  // takes less returns as far as the pool's peak has heard of them
    Pool *pool;
    Magazine *before;
    Magazine *after;
    FreeElement elements[CHUNK_MAGAZINE_SIZE];
};

struct Pool {
    uint64_t stride;
    uint32_t index;
    uint32_t tag;
    size_t element_size;
    uint64_t slab_count;
    uint64_t max_slabs;      // 0 for no bound
    uint64_t span_elements;  // elements of one span, a slab or more
    uint32_t magazine_limit;
    Pool *next;

    alignas(64) mutable pthread_mutex_t lock;  // guards all below
    uint64_t slabs;
    uint64_t fresh;  // elements of the slabs that were never handed out
    Span *span;      // the newest, with `cut` elements handed out of it
    uint64_t cut;
    FreeElement *depot;
    uint64_t depot_count;
    uint64_t depot_capacity;
    Magazine *magazines;
    int64_t told;  // live elements as far as threads have told them
    int64_t peak;
    uint64_t past_takes;  // by threads that ended, and by those without a magazine
    uint64_t past_returns;
    uint64_t refused;
};

// The way round the magazine: exchange with the depot, or go to it for the single element.
void *take_slowly(Pool &pool);
void give_back_slowly(Pool &pool, FreeElement element);
void count_refusal(Pool &pool);

// The calling thread's magazine, or null when it has none yet.
Magazine *find_magazine(const Pool &pool);

// Gives the first slab at once; false when memory runs out.
bool preallocate(Pool &pool);

// All pools, newest first.
const Pool *first_pool();
const Pool *next_pool(const Pool &pool);
chunk_stats_t pool_stats(const Pool &pool);

}  // namespace oru::platform
