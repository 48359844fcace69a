/*
 * Tagged allocator: every block carries a 32-bit tag, component number plus index, so that a report
 * can name the owner of every block. Counts are kept per thread and summed when somebody asks, so
 * that threads do not share a cache line here; those of a thread that ended are kept.
 *
 * All operations may be called from any thread at any time. Blocks are aligned to 16 bytes and may
 * be given back by another thread than the one that took them.
 */
#ifndef ORUPLATFORM_POOLHEAP_H
#define ORUPLATFORM_POOLHEAP_H

#include <oru/base.h>

ORU_BEGIN_DECLS

/* Tags of one component share these bits; the others are the index within the component. */
#define POOLHEAP_COMPONENT_MASK 0x7ff00000u

/* The platform layer's own component, with the memory of its hash tables and trees. */
#define POOLHEAP_COMPONENT_PLATFORM 0x2800000u

/* The peak of a tag is exact while one thread uses the tag; each further thread that uses it at the
 * same time may shift it by up to this many bytes. */
#define POOLHEAP_PEAK_SLACK 65536

/* More tags than this share one row of the report, named "(other tags)". */
#define POOLHEAP_MAX_TAGS 1023

typedef struct poolheap_stats {
    uint64_t live_blocks;  /* blocks taken and not given back */
    uint64_t live_bytes;   /* bytes asked for in these blocks */
    uint64_t peak_bytes;   /* highest `live_bytes` so far */
    uint64_t total_blocks; /* blocks taken so far; a block that only changes its size stays one */
} poolheap_stats_t;

/* ---- Taking and giving back ----
 *
 * The four allocating operations give null when memory runs out and when the failure hook says so.
 * A size of 0 gives a block of its own that holds nothing. What they give is the caller's, who
 * gives it back with `ph_free_named`. */

/* Names the tags of a component for the report. `component`: the component number, such as
 * 0x2900000. `tag_name`: called with a whole tag of that component, gives a text that lives as long
 * as the process; null takes the names away. A repeated call replaces the function; the sixteenth
 * component and those behind it stay without names. */
ORU_API void poolheap_init(uint32_t component, const char *(*tag_name)(uint32_t tag));

/* A block of `size` bytes with undefined contents. */
ORU_API void *ph_malloc_named(uint32_t tag, size_t size);

/* A zeroed block of `count` times `size` bytes; null too when the product overflows. */
ORU_API void *ph_calloc_named(uint32_t tag, size_t count, size_t size);

/* The block with `size` bytes, perhaps at another place, contents kept up to the smaller size. On
 * failure null, and the old block stays as it was. From then on the block carries `tag`. A null
 * `block` makes a new block; a size of 0 keeps a block without contents. */
ORU_API void *ph_realloc_named(uint32_t tag, void *block, size_t size);

/* A copy of a zero-terminated text; null too for a null `text`. */
ORU_API char *ph_strdup_named(uint32_t tag, const char *text);

/* Gives any block of the four operations back; null is harmless. Result 0.
 * A pointer that is no such block, and in debug builds exactly any pointer that is not a live block
 * (a double free is told from a foreign pointer), is reported at level 0 and ends the process. */
ORU_API int32_t ph_free_named(void *block);

/* ---- Looking ----
 *
 * Sums are exact for all that happened before the call; while other threads allocate, they are a
 * moment's view. */

/* Prints a table of all tags that were ever used and of all pools. Null prints to standard error.
 */
ORU_API void poolheap_report(FILE *out);

/* Fills `out_stats` for one tag. 0, 2 for a tag that was never used (the record is then all 0), 22
 * for a null record. */
ORU_API int32_t poolheap_tag_stats(uint32_t tag, poolheap_stats_t *out_stats);

/* The sums over all tags; `peak_bytes` is the sum of the tags' peaks. 0, 22 for a null record. */
ORU_API int32_t poolheap_total_stats(poolheap_stats_t *out_stats);

/* Live blocks and live bytes of all tags. Elements of pools are not among them. */
ORU_API uint64_t poolheap_live_blocks(void);
ORU_API uint64_t poolheap_live_bytes(void);

/* The name of a tag as its component tells it, "oruplatform..." for the platform's own; null when
 * nobody names the component. */
ORU_API const char *poolheap_tag_name(uint32_t tag);

/* ---- Failing on purpose, for tests ----
 *
 * Calls of the four allocating operations and of `chunk_malloc` are counted while a rule is on, by
 * all threads together, whether they succeed or not; a pool's own refills are not. One rule at a
 * time: setting one replaces the other and starts counting at 0. Null texts for `ph_strdup_named`
 * are not counted. */

/* Fails the `nth` call from now, counted from 1; with `for_good` non-zero that one and all behind
 * it. With 0 nothing fails and calls are only counted. */
ORU_API void poolheap_fail_nth(uint64_t nth, int32_t for_good);

/* Fails every allocation that carries `tag`, elements of pools made with that tag included, and the
 * making of such pools. */
ORU_API void poolheap_fail_tag(uint32_t tag);

/* Ends the rule. The two numbers below stay readable. */
ORU_API void poolheap_fail_off(void);

/* Calls counted since the rule was set. */
ORU_API uint64_t poolheap_fail_calls(void);

/* Calls that were made to fail since the rule was set: non-zero when the failure was hit. */
ORU_API uint64_t poolheap_fail_hits(void);

ORU_END_DECLS

#endif
