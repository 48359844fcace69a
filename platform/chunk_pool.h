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
#include "platform/sanitizers.h"
#include "platform/thread_block.h"

namespace oru::platform {

struct Pool;

struct Magazine {
    // The element returned last stands apart. Take and return in turn then go through this one word
    // and need no count, whose way to memory and back would take twice the time.
    OwnedCounter<void *> last;
    OwnedCounter<uint32_t> count;
    uint32_t limit;  // elements that may be kept; a half of it is exchanged
    OwnedCounter<uint64_t> takes;
    int64_t exchanged;  // elements got from the depot less those given to it
    int64_t told;       // live elements as far as the pool's peak has heard of them
    Pool *pool;
    Magazine *before;
    Magazine *after;
    void *elements[CHUNK_MAGAZINE_SIZE];
};

struct Pool {
    uint32_t place;  // of its magazine in the thread's block; kDirectPools for all later pools
    uint16_t owner;  // its number in the register of live elements, from 1
    uint32_t tag;
    size_t element_size;
    uint64_t stride;
    uint64_t slab_count;
    uint64_t max_slabs;  // 0 for no bound
    size_t span_size;    // of a slab or more
    uint32_t magazine_limit;
    Pool *next;

    alignas(64) mutable pthread_mutex_t lock;  // guards all below
    uint64_t slabs;
    uint64_t fresh;  // elements of the slabs that were never handed out
    char *cut;       // where the next of them is cut from the newest span
    char *cut_end;
    void **depot;
    uint64_t depot_count;
    uint64_t depot_capacity;
    Magazine *magazines;
    int64_t told;  // live elements as far as threads have told them
    int64_t peak;
    uint64_t past_takes;  // by threads that ended, and by those without a magazine
    int64_t past_live;    // takes less returns by these
    uint64_t refused;
};

// An element of the magazine; null when it has none.
inline void *pop(Magazine &magazine) {
    void *element = magazine.last.get();
    if (element != nullptr) [[likely]] {
        magazine.last.set(nullptr);
        magazine.takes.add(1);
        return element;
    }
    const uint32_t count = magazine.count.get();
    if (count == 0) {
        return nullptr;
    }
    magazine.count.set(count - 1);
    magazine.takes.add(1);
    return magazine.elements[count - 1];
}

// False, and nothing happens, when there is no room.
inline bool push(Magazine &magazine, void *element) {
    void *former = magazine.last.get();
    if (former != nullptr) [[unlikely]] {
        const uint32_t count = magazine.count.get();
        if (count >= magazine.limit) {
            return false;
        }
        magazine.elements[count] = former;
        magazine.count.set(count + 1);
    }
    magazine.last.set(element);
    return true;
}

// Enters a free element as live and gives it.
inline void *mark_taken(const Pool &pool, void *element) {
    __atomic_store_n(owner_of_element(element), pool.owner, __ATOMIC_RELAXED);
    unpoison(element, pool.element_size);
    return element;
}

// The way round the magazine: exchange with the depot, or go to it for the single element. Takes
// that are to fail end here.
void *take_slowly(Pool &pool);
int32_t give_back_slowly(Pool &pool, void *element);

// Gives 0.
int32_t refuse(Pool &pool);

// Gives the first slab at once; false when memory runs out.
bool preallocate(Pool &pool);

// All pools, newest first.
const Pool *first_pool();
const Pool *next_pool(const Pool &pool);
chunk_stats_t pool_stats(const Pool &pool);

}  // namespace oru::platform
