/*
 * ORUDoRowProperties: the flat view of a data tree, a set of ORUDoRowProperty rows, one for each
 * leaf, each with the leaf's properties. A set holds the tables by itself: the tree may die before
 * it. Only the reference counts are safe among threads.
 */
#ifndef ORU_ROWS_PROPERTIES_H
#define ORU_ROWS_PROPERTIES_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ----
 * The results belong to the caller. */

/* An empty set; null when memory runs out. */
ORU_API ORUDoRowProperties *oru_do_rows_properties_new(void);

/*
 * The rows of a tree, in the order of a depth-first walk; hidden nodes are treated like any others.
 * Each leaf's own table gets the leaf's URI as the attribute `_uri`.
 *
 * Null, traced at level 3, for a null tree, for a leaf without properties or without a URI, and
 * when memory runs out. Leaves that were met before have their `_uri` then.
 */
ORU_API ORUDoRowProperties *oru_do_dtree_into_properties(ORUDoDtree *dtree);

/* ---- Reading ---- */

/* How many rows there are; 0 for null. */
ORU_API int32_t oru_do_rows_properties_count(ORUDoRowProperties *rows);

/* The first row, and the one behind `row`; borrowed, null for null and at the end. */
ORU_API ORUDoRowProperty *oru_do_rows_property_get_first(ORUDoRowProperties *rows);
ORU_API ORUDoRowProperty *oru_do_rows_property_get_next(ORUDoRowProperty *row);

/* The table of a row with one more reference, which is the caller's; null for null. */
ORU_API ORUDoProperties *oru_do_rows_property_get_properties(ORUDoRowProperty *row);

/* ---- Changing ---- */

/* Puts a row in front, which takes over the caller's reference to the table. 0; 3 for a null
   argument; 10002 when memory runs out, traced at level 3. On failure the reference stays the
   caller's. */
ORU_API int32_t oru_do_rows_properties_prepend(ORUDoRowProperties *rows,
                                               ORUDoProperties *properties);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoRowProperties *oru_do_rows_properties_ref(ORUDoRowProperties *rows);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_rows_properties_deref(ORUDoRowProperties *rows);

/* Sizes the pool of the sets. */
ORU_API void *init_chunk_poolheap_oru_do_rows_properties(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
