/*
 * ORUVtableSorter: orders rows by key columns as they arrive and hands them over as a table,
 * numbering them on the way. Rows of equal keys keep the order of their arrival.
 *
 * A sorter is not counted and takes no lock: it belongs to one thread.
 */
#ifndef ORU_VTABLE_SORTER_H
#define ORU_VTABLE_SORTER_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/*
 * A sorter by the `key_count` columns from `key_start` on, counted from 0; below 1 all rows are
 * equal. `directions`, which may be null and is copied, has a character for each key: 'd' is
 * descending, 's' is for strings and puts the shorter text first, every other one is ascending.
 *
 * `index_column` is the column that gets a row's number, from 1, when the rows are handed over;
 * `count_column` the one that gets the number of all rows, those included that could not be filed.
 * Below 0 stands for none. Null when memory runs out.
 */
ORU_API ORUVtableSorter *oru_vtable_sorter_new(int32_t key_start, int32_t key_count,
                                               const char *directions, int32_t index_column,
                                               int32_t count_column);

/*
 * Files a row, which the sorter shares. A key column that the row does not have is skipped, so that
 * a later key moves up; a key that is missing then sorts first.
 *
 * 0; 10002 when memory runs out; 10000 when keys cannot be compared: values of different kinds, or
 * none of strings under 's'. Asserts "sorter", and "vlist" on a null row whose keys are looked for;
 * without keys a null row only counts.
 */
ORU_API int32_t oru_vtable_sorter_add(ORUVtableSorter *sorter, ORUDoVlist *row);

/*
 * Appends all rows in order to `vtable`, which may be null, and deletes the sorter; a null sorter
 * is ignored. Number and count are written into the caller's own rows as unsignedInt, where they
 * have the column.
 */
ORU_API void oru_vtable_sorter_delete(ORUVtableSorter *sorter, ORUDoVtable *vtable);

ORU_END_DECLS

#endif
