/*
 * ORUDoVtable: a table of rows, each a list of values, with an optional description of its columns.
 * It is the bulk form of a read: one row a resource, one column a requested attribute. Rows are
 * kept as they are given: nothing checks their length or the types of their values.
 *
 * A table takes no lock. Every operation asserts "vtable" on a null table unless it says otherwise.
 */
#ifndef ORU_VTABLE_H
#define ORU_VTABLE_H

#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ---- */

/* An empty table with one reference, or null when memory runs out. */
ORU_API ORUDoVtable *oru_do_vtable_new(void);

/* ---- Columns ---- */

/* Replaces the description of the columns by a shared one; null clears. */
ORU_API void oru_do_vtable_set_column_info(ORUDoVtable *vtable, ORUDoNtlist *ntlist);

/* The description of the columns, borrowed, or null. */
ORU_API ORUDoNtlist *oru_do_vtable_get_column_info(ORUDoVtable *vtable);

/* How many columns are described, -1 without a description. */
ORU_API int32_t oru_do_vtable_get_column_num(ORUDoVtable *vtable);

/* Always null: the types of columns are read through their description. */
ORU_API const int32_t *oru_do_vtable_get_column_types(ORUDoVtable *vtable);

/* ---- Rows ---- */

/*
 * Appends a row, counting a reference on it. The result is the new number of rows, -1 for a null
 * row. A row that finds no memory counts all the same, and what was in the table before it is given
 * up by the next one.
 */
ORU_API int32_t oru_do_vtable_add(ORUDoVtable *vtable, ORUDoVlist *row);

/* The number of rows. */
ORU_API int32_t oru_do_vtable_get_row_num(ORUDoVtable *vtable);

/* The row at `index` from 0, borrowed; null for an index out of range. */
ORU_API ORUDoVlist *oru_do_vtable_get(ORUDoVtable *vtable, int32_t index);

/* Releases all rows and keeps the description of the columns. */
ORU_API void oru_do_vtable_clear(ORUDoVtable *vtable);

/* ---- Walking ----
 * A table binds the kind of properties lists, DO_COLL_PROPERTIES_LIST. A null iterator asserts
 * "iter". */

/* Binds `iter` to all rows; `_reset` to those from `item` on, all of them for a null `item`. */
ORU_API void oru_do_vtable_iter(ORUDoVtable *vtable, ORUDoIter *iter);
ORU_API void oru_do_vtable_iter_reset(ORUDoVtable *vtable, ORUDoVtableItem *item, ORUDoIter *iter);

/* Non-zero while there are rows. */
ORU_API int32_t oru_do_vtable_has_next(ORUDoIter *iter);

/* The row at hand, or the item that holds it; borrowed, null at the end. */
ORU_API ORUDoVlist *oru_do_vtable_get_next(ORUDoIter *iter);
ORU_API ORUDoVtableItem *oru_do_vtable_get_next_item(ORUDoIter *iter);

/* The row of an item, borrowed; asserts "item". */
ORU_API ORUDoVlist *oru_do_vtable_item_get_row(ORUDoVtableItem *item);

/* ---- Printing ---- */

/* Append "[\n", the rows' texts separated by ",\n", and "]\n"; the second marks values that are
   defaults. `tabs` is not looked at. A null table adds nothing. The result is 0. */
ORU_API int32_t oru_do_vtable_to_strbuf(ORUDoVtable *vtable, int32_t tabs, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_vtable_to_strbuf_with_defaults(ORUDoVtable *vtable, int32_t tabs,
                                                      ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoVtable *oru_do_vtable_ref(ORUDoVtable *vtable);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_vtable_deref(ORUDoVtable *vtable);

/* Size the pools of the tables and of their items. */
ORU_API void *init_chunk_poolheap_oru_do_vtable(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_vtable_item(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
