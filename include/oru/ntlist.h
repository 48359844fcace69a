/*
 * ORUDoNtlist: names with their types, as descriptions of columns and of the members of complex
 * types.
 *
 * Every operation asserts "ntlist" on a null list unless it says otherwise. All lookups walk from
 * the head. Only the reference count is safe among threads.
 */
#ifndef ORU_NTLIST_H
#define ORU_NTLIST_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ---- */

/* An empty list, which belongs to the caller; null when memory runs out. */
ORU_API ORUDoNtlist *oru_do_ntlist_new(void);

/* ---- Reading ----
 * Items and what they hold are borrowed. */

/* How many items there are. */
ORU_API int32_t oru_do_ntlist_get_len(ORUDoNtlist *ntlist);

/* The item at `index` from 0, or null. */
ORU_API ORUDoNtlistItem *oru_do_ntlist_get_item(ORUDoNtlist *ntlist, int32_t index);

/* The first item of that name, or null; its index from 0, or -1. A null text finds nothing. */
ORU_API ORUDoNtlistItem *oru_do_ntlist_get_item_by_name(ORUDoNtlist *ntlist, const char *text);
ORU_API int32_t oru_do_ntlist_get_item_index_by_name(ORUDoNtlist *ntlist, const char *text);

/* What an item holds: its name, its type code (-3 where only the description tells the type) and
   the description of its type. Assert "item". */
ORU_API ORUDoName *oru_do_ntlist_item_get_name(ORUDoNtlistItem *item);
ORU_API int32_t oru_do_ntlist_item_get_type_code(ORUDoNtlistItem *item);
ORU_API ORUDoTypedefMeta *oru_do_ntlist_item_get_typedef(ORUDoNtlistItem *item);

/*
 * Walk the items; the kind is DO_COLL_NTLIST. They assert "iter"; `_has_next` also asserts
 * "iter->coll_type == DO_COLL_NTLIST". `_get_next` gives null at the end.
 */
ORU_API void oru_do_ntlist_iter(ORUDoNtlist *ntlist, ORUDoIter *iter);
ORU_API int32_t oru_do_ntlist_has_next(ORUDoIter *iter);
ORU_API ORUDoNtlistItem *oru_do_ntlist_get_next(ORUDoIter *iter);

/* ---- Adding ----
 * The result is the new length, or -1 when memory runs out. The list counts its own references.
 * Assert "name" too. */

/* Appends a name of a built-in type, with a description made of the code and a list of constraints
   or null. */
ORU_API int32_t oru_do_ntlist_add_builtin_type(ORUDoNtlist *ntlist, ORUDoName *name,
                                               int32_t type_code, ORUDoConstraintList *extra);

/* Appends a name with the description of its type; -1 also for a null description. The item's type
   code is -3. */
ORU_API int32_t oru_do_ntlist_add_typedef_meta(ORUDoNtlist *ntlist, ORUDoName *name,
                                               ORUDoTypedefMeta *typedef_meta);

/* ---- Printing ---- */

/* Appends "[", the items as name and type code, each on a line of its own and separated by commas,
   and "]" to a buffer. `tabs` is ignored; a null list adds nothing. Result 0. */
ORU_API int32_t oru_do_ntlist_to_strbuf(ORUDoNtlist *ntlist, int32_t tabs, ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoNtlist *oru_do_ntlist_ref(ORUDoNtlist *ntlist);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_ntlist_deref(ORUDoNtlist *ntlist);

/* Size the pools of the records and of their items. */
ORU_API void *init_chunk_poolheap_oru_do_ntlist(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_ntlist_item(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
