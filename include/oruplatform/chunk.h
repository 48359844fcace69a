/*
 * Fixed-size pools: elements of one size, taken and returned from any thread, as a rule without a
 * lock. Each thread keeps a small magazine of free elements per pool and exchanges half a magazine
 * with the pool at a time; the magazines of a thread that ends go back to their pools.
 *
 * A pool lives as long as the process. Elements may be returned by another thread than the one that
 * took them. In builds with AddressSanitizer free elements are poisoned.
 */
#ifndef ORUPLATFORM_CHUNK_H
#define ORUPLATFORM_CHUNK_H

#include <oru/base.h>

ORU_BEGIN_DECLS

/* Flags of a pool. The library always sets the first two. */
#define CHUNK_FLAG_THREADED 0x1u /* many threads use the pool; always so, whether set or not */
#define CHUNK_FLAG_GROW 0x100u   /* the pool grows; without it the pool is one slab */
#define CHUNK_FLAG_PREALLOCATE \
    0x200u /* the first slab is made with the pool and its pages touched */

/* How many slabs the pool may have, 1 to 0xffff; 0 for no bound. */
#define CHUNK_FLAG_MAX_SLABS_SHIFT 16
#define CHUNK_FLAG_MAX_SLABS_MASK 0xffff0000u
#define CHUNK_FLAG_MAX_SLABS(n) (((uintptr_t)(n)&0xffffu) << CHUNK_FLAG_MAX_SLABS_SHIFT)

/* Free elements that one thread may keep for itself in its magazine of a pool, beside the one that
 * it returned last. They are not seen by the others, so a pool with a cap may give null to one
 * thread while others keep some. A pool with a cap lets each thread keep an eighth of its elements
 * at most. */
#define CHUNK_MAGAZINE_SIZE 128

/* Elements have at most this many bytes. */
#define CHUNK_MAX_ELEMENT_SIZE 0x1000000u

typedef struct chunk_stats {
    size_t element_size;  /* as the pool was made with */
    uint64_t slab_count;  /* elements that a slab has */
    uint64_t slabs;       /* slabs made so far */
    uint64_t max_slabs;   /* the cap, 0 for none */
    uint64_t live;        /* elements taken and not returned; exact */
    uint64_t peak;        /* highest `live`, within one magazine for each thread */
    uint64_t total_takes; /* elements handed out so far; exact */
    uint64_t refused;     /* returns refused so far */
    uint32_t tag;
} chunk_stats_t;

/* Makes a pool. `element_size`: bytes of an element, 1 to CHUNK_MAX_ELEMENT_SIZE. `count`: elements
 * of a slab, from 1; the pool grows by one slab whenever it runs empty. `flags`: see above. `one`
 * is not looked at. `tag`: names the pool in reports and for the failure hook. Null for a size or
 * count out of range, a slab that would not fit into memory, the 65,536th pool, when memory runs
 * out, and when the failure hook fails the tag. The handle is the pool's own and is never freed. */
ORU_API void *chunk_create_poolheap(size_t element_size, intptr_t count, uintptr_t flags,
                                    int32_t one, uint32_t tag);

/* Takes an element, aligned to 16 bytes, contents undefined. Null when the pool has reached its cap
 * or memory has run out, when the failure hook says so, and for a null pool. */
ORU_API void *chunk_malloc(void *pool);

/* Returns an element. Non-zero on success; 0, and nothing happens, for anything that is not the
 * address of a live element of this very pool: null, foreign memory, another pool's element, the
 * middle of an element, an element that is free already. (Only two threads that return one element
 * at the very same moment may both succeed.) */
ORU_API int32_t chunk_free(void *pool, void *element);

/* Fills `out_stats`. 0, 22 for a null pool or record. */
ORU_API int32_t chunk_pool_stats(void *pool, chunk_stats_t *out_stats);

/* Live elements of all pools together. */
ORU_API uint64_t chunk_live_elements(void);

ORU_END_DECLS

#endif
