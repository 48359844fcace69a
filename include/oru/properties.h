/*
 * ORUDoProperties: the attributes of a managed resource, an ordered table from names to values.
 */
#ifndef ORU_PROPERTIES_H
#define ORU_PROPERTIES_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Settings of the process ----
 * Plain variables, meant to be set during start-up. They affect tables that make their hash index
 * later. Both are traced at level 7. */

/* How many entries a table holds before it makes a hash index; 20 at start. */
ORU_API void oru_do_properties_set_max_size_before_hash_table(uint32_t count);

/* How many buckets a hash index has; 43 at start. Not 0. */
ORU_API void oru_do_properties_set_hash_table_size(uint32_t size);

ORU_END_DECLS

#endif
