/*
 * A cache of query results: property tables by a text key, as a rule a URI. It holds a bounded
 * number of them; the one that was not asked for the longest goes first.
 *
 * The record is embedded by its owner, who initialises it before anything else. Its fields are to
 * be read only. It takes no locks: the owner does, also round a look-up, which changes the order.
 *
 * Operations assert "cache" on null. Memory that runs out, and a cache that contradicts itself, end
 * the process.
 */
#ifndef ORU_RECORD_CACHE_H
#define ORU_RECORD_CACHE_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* An entry's place by age; the cache's own. */
typedef struct cache_size_tracker_t cache_size_tracker_t;

typedef struct query_record_cache {
    uint32_t max_size; /* bound on the number of entries; 0 in a destroyed cache */
    void (*free_func)(void *key);
    uint32_t size; /* number of entries */
    cache_size_tracker_t *oldest;
    cache_size_tracker_t *newest;
    ORUHashtable *records; /* null in a destroyed cache */
} query_record_cache;

/* ---- Making ---- */

/*
 * Makes `cache`, storage of any contents, an empty cache of at most `max_size` entries, from 1;
 * twice as many buckets are made at once. `free_func` frees the keys. 1; 0 for a null `free_func`,
 * traced at level 3 as "No free_func specified", and `cache` is then as it was. A table that cannot
 * be had is fatal: "Failed to create record cache hashtable".
 */
ORU_API int32_t init_query_record_cache(query_record_cache *cache, uint32_t max_size,
                                        void (*free_func)(void *key));

/* ---- Entries ---- */

/*
 * Adds an entry as the newest, after the oldest one if the cache is full. Both arguments pass into
 * the ownership of the cache: `key`, which `free_func` will free, and one reference of
 * `properties`; none is counted here. Always 1. A key that is there already, or null, is fatal:
 * "Record cache add failed %s"; so callers look up first. Traced at level 7: "Record cache add %s",
 * and for the entry that goes "Record cache full - prune %s".
 */
ORU_API int32_t add_query_record_cache(query_record_cache *cache, const char *key,
                                       ORUDoProperties *properties);

/* The properties of `key`, lent until the entry goes; null when there are none, for a null key, and
   in a destroyed cache. The entry becomes the newest. */
ORU_API ORUDoProperties *find_query_record_cache(query_record_cache *cache, const char *key);

/* ---- Reading ---- */

/* The number of entries. */
ORU_API int32_t get_record_cache_size(query_record_cache *cache);

/* 1 when the table of a cache in use has as many entries as the cache counts. 0 otherwise, traced
   at level 3 as "record cache size mismatch %d/%d" with the table's number first. */
ORU_API int32_t record_cache_sanity_check(query_record_cache *cache);

/* ---- Life ---- */

/*
 * Releases all entries, the oldest first, each with its key and the reference of its properties,
 * traced at level 7 as "Clean cache record %s". The storage is the owner's and may be initialised
 * again. Always 1; a cache that is destroyed already is fatal: "Failed to close record cache
 * table".
 */
ORU_API int32_t destroy_query_record_cache(query_record_cache *cache);

/* Size the pools that entries, and the chained elements of the table, come from, before the first
   one is made. An entry takes two elements of the first pool. */
ORU_API void *init_chunk_poolheap_record_cache(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_record_cache_hashtable_elem(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
