/*
 * ORUDoPropertiesList: property tables in the order in which they were added, the result set of a
 * read.
 *
 * Every operation asserts "properties_list" on a null list unless it says otherwise. Only the
 * reference count is safe among threads.
 */
#ifndef ORU_PROPERTIES_LIST_H
#define ORU_PROPERTIES_LIST_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ---- */

/* An empty list, which belongs to the caller; null when memory runs out. */
ORU_API ORUDoPropertiesList *oru_do_properties_list_new(void);

/* ---- Reading ----
 * Tables are borrowed. */

/* How many tables there are. */
ORU_API int32_t oru_do_properties_list_get_len(ORUDoPropertiesList *properties_list);

/* The table at `index` from 0, or null. */
ORU_API ORUDoProperties *oru_do_properties_list_get(ORUDoPropertiesList *properties_list,
                                                    int32_t index);

/*
 * Walk the tables; the kind is DO_COLL_PROPERTIES_LIST. They assert "iter"; `_has_next` also
 * asserts "iter->coll_type == DO_COLL_PROPERTIES_LIST". `_get_next` gives null at the end.
 */
ORU_API void oru_do_properties_list_iter(ORUDoPropertiesList *properties_list, ORUDoIter *iter);
ORU_API int32_t oru_do_properties_list_has_next(ORUDoIter *iter);
ORU_API ORUDoProperties *oru_do_properties_list_get_next(ORUDoIter *iter);

/* ---- Changing ---- */

/* Appends a table, counting a reference. The result is the new length; -1 for a null table and when
   memory runs out. */
ORU_API int32_t oru_do_properties_list_add(ORUDoPropertiesList *properties_list,
                                           ORUDoProperties *properties);

/* Empties the list. */
ORU_API void oru_do_properties_list_clear(ORUDoPropertiesList *properties_list);

/* ---- Printing ---- */

/* Appends "[", the texts of the tables separated by ", ", and "]" to a buffer. A null or empty list
   adds nothing. Result 0. */
ORU_API int32_t oru_do_properties_list_to_strbuf(ORUDoPropertiesList *properties_list, int32_t tabs,
                                                 ORUDoStrbuf *strbuf);

/* Logs the text and a newline at `level`, when the logger's level is at least that. Asserts
   "list". */
ORU_API void oru_do_properties_list_trace(ORUDoPropertiesList *list, uint32_t level);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoPropertiesList *oru_do_properties_list_ref(ORUDoPropertiesList *properties_list);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_properties_list_deref(ORUDoPropertiesList *properties_list);

/* Size the pools of the records and of their items. */
ORU_API void *init_chunk_poolheap_oru_do_properties_list(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_properties_list_item(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
