/*
 * ORUHashtable: a chained hash table that keeps the first element of each chain inside its bucket
 * array, so that an entry without a collision needs no allocation; fixed in size, or growing by
 * itself. It owns neither keys nor values, it stores the pointers that it is given. Around it stand
 * hash and match functions, for tables with custom keys and for the open tables of the platform.
 *
 * A table has one owner and no lock: the owner locks. Every operation with a status gives 0 for
 * success, 1 for what is refused during a walk, 2 for not found, 12 when memory runs out, 17 for a
 * key that exists and 22 for a bad argument.
 */
#ifndef ORU_HASHTABLE_H
#define ORU_HASHTABLE_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* Kinds of keys. */
enum {
    ORU_HASHTABLE_KEY_CUSTOM = 0, /* through the table's hash and match functions */
    ORU_HASHTABLE_KEY_TEXT = 1    /* zero-terminated texts */
};

/* ---- Making ----
 *
 * `size` is the number of buckets, at least 1. `alloc_elem` gives an element of three pointers,
 * zeroed or to be overwritten whole, or null; `free_elem` takes it back. The result is null when
 * memory runs out, traced at level 3 as "Failed to allocate table" or "Failed to allocate hashtable
 * bucket array", and with "Invalid memory management functions alloc %p free %p" when only one of
 * the two functions is given. */

/* A fixed table. Without both functions elements come from the tagged heap. `key_kind` is 1 as a
   rule; a kind that does not exist is fatal at the first key ("default case"). */
ORU_API ORUHashtable *oru_hashtable_create(uint32_t key_kind, uint32_t size,
                                           void *(*alloc_elem)(void),
                                           void (*free_elem)(void *element));

/* A fixed table of kind 0. `match` gives non-zero for the same key. */
ORU_API ORUHashtable *oru_hashtable_create_custom(uint32_t size, uint32_t (*hash)(const void *key),
                                                  int32_t (*match)(const void *a, const void *b),
                                                  void *(*alloc_elem)(void),
                                                  void (*free_elem)(void *element));

/*
 * A table that grows, at an insert that finds four entries a bucket or more, by doubling until
 * fewer than one entry stands on two buckets or `max_size` would be exceeded. It has no element
 * functions of its own: both must be given. Kind 1, since custom functions cannot be set.
 */
ORU_API ORUHashtable *oru_hashtable_dynamic_create(uint32_t key_kind, uint32_t size,
                                                   uint32_t max_size, void *(*alloc_elem)(void),
                                                   void (*free_elem)(void *element));

/* ---- Entries ---- */

/* Adds an entry; `value` may be null. 22 for a null table or key, traced at level 3 as "hashtable
   null" and "null key"; 1 during a walk; 12; 17. */
ORU_API int32_t oru_hashtable_insert(ORUHashtable *table, const void *key, void *value);

/* The same for a key that the caller knows to be new: no search for a duplicate is made. */
ORU_API int32_t oru_hashtable_insert_quick(ORUHashtable *table, const void *key, void *value);

/* Stores the value of `key`, null perhaps, in `*value_out`. 22 if an argument is null, 2 if the key
   is not there. */
ORU_API int32_t oru_hashtable_search(ORUHashtable *table, const void *key, void **value_out);

/*
 * Removes the entry of `key`. `key_out` and `value_out` may be null; they receive what was stored.
 * 22 for a null table or key, 2 if the key is not there. During a walk only the entry at hand may
 * be removed, once; everything else gives 1.
 */
ORU_API int32_t oru_hashtable_remove(ORUHashtable *table, const void *key, void **key_out,
                                     void **value_out);

/*
 * Calls `walk` for every entry, bucket by bucket, until it gives 0. `element` is the table's own.
 * The function may remove the entry at hand and nothing else. 22 for a null table or function, 1
 * inside another walk of the table, 0 otherwise, stopped or not.
 */
ORU_API int32_t oru_hashtable_walk(ORUHashtable *table, void *context,
                                   int32_t (*walk)(void *key, void *value, void *context,
                                                   void *element));

/* Calls `close`, unless it is null, for every entry, which is the place to free keys and values,
   then destroys the table. 22 for a null table. Not from within a walk. */
ORU_API int32_t oru_hashtable_close(ORUHashtable *table, void *context,
                                    void (*close)(void *key, void *value, void *context));

/* ---- Reading ----
 * These assert "table" on null. */

/* The number of entries. */
ORU_API int32_t oru_hashtable_num_entries(ORUHashtable *table);

/* The number of buckets. */
ORU_API int32_t oru_hashtable_get_size(ORUHashtable *table);

/* Elements chained behind a bucket, as far as they are counted: a quick insert does not count the
   one it makes, a removal always takes one off, and growth leaves the count as it was. */
ORU_API int32_t oru_hashtable_get_conflicts(ORUHashtable *table);

/* Entries divided by buckets. */
ORU_API double oru_hashtable_get_load_factor(ORUHashtable *table);

/* ---- Hash functions ----
 * One hash for all of them: one byte at a time, 32 bits. Bytes are signed, so that texts above 0x7f
 * have hashes of their own. Null keys are not accepted. */

/* Of `n` bytes; 0 for an `n` below 1. */
ORU_API uint32_t oru_hash_calculate(const void *bytes, int32_t n);

/* Of a zero-terminated text; `oru_hashset_str_calc` takes a pointer to the pointer to it. */
ORU_API uint32_t oru_hash_str_calc(const char *text);
ORU_API uint32_t oru_hashset_str_calc(const void *holder);

/* Of the four bytes at `key`. */
ORU_API uint32_t oru_hash_int_calc(const void *key);
ORU_API uint32_t oru_hash_unsigned_int_calc(const void *key);
ORU_API uint32_t oru_hashset_int_calc(const void *key);

/* Of the eight bytes at `key`. */
ORU_API uint32_t oru_hash_long_calc(const void *key);
ORU_API uint32_t oru_hashset_long_calc(const void *key);

/* ---- Match functions ----
 * Each answers in the sense of the kind of table that calls it, so the senses differ. */

/* Non-zero when the four bytes are equal. */
ORU_API int32_t oru_hash_int_matcher(const void *a, const void *b);
ORU_API int32_t oru_hash_unsigned_int_matcher(const void *a, const void *b);
ORU_API int32_t oru_hashset_int_matcher(const void *a, const void *b);

/* Non-zero when the eight bytes are equal. */
ORU_API int32_t oru_hashset_long_matcher(const void *a, const void *b);

/* Zero when the eight bytes are equal. */
ORU_API int32_t oru_hash_long_matcher(const void *a, const void *b);

/* Zero for equal texts, as `strcmp`: the open tables want it so. */
ORU_API int32_t oru_hash_str_matcher(const char *a, const char *b);

/* Non-zero for equal texts; takes pointers to the pointers to them. */
ORU_API int32_t oru_hashset_str_matcher(const void *holder1, const void *holder2);

/* ---- Life ---- */

/* Sizes the pool that the records of tables come from, before the first one is made. */
ORU_API void *init_chunk_poolheap_oru_hashtable(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
