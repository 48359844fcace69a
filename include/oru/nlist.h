/*
 * ORUDoNlist: names in the order in which they were added, as selections of attributes and lists of
 * columns. A name may occur more than once; lookups find the first.
 *
 * Every operation asserts "nlist" on a null list unless it says otherwise. All lookups walk from
 * the head. Only the reference count is safe among threads.
 */
#ifndef ORU_NLIST_H
#define ORU_NLIST_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. */

/* An empty list. */
ORU_API ORUDoNlist *oru_do_nlist_new(void);

/* A list of new names from a null-terminated array of texts; empty for a null array. A record that
   cannot be had asserts "nlist". Names that cannot be had are left out. */
ORU_API ORUDoNlist *oru_do_nlist_new_strnames(const char *const *texts);

/* A list of new names from the unqualified names of the items of `ntlist` (asserted). Null also
   for a qualified name without an unqualified form. */
ORU_API ORUDoNlist *oru_do_nlist_new_from_ntlist(ORUDoNtlist *ntlist);

/* A list of the names of the first list and then those of the second, shared. Either may be null;
   null for two nulls. */
ORU_API ORUDoNlist *oru_do_nlist_merge(ORUDoNlist *nlist1, ORUDoNlist *nlist2);

/* ---- Reading ----
 * Names are borrowed. */

/* How many names there are; 0 for a null list. */
ORU_API int32_t oru_do_nlist_get_len(ORUDoNlist *nlist);

/* The name at `index` from 0, or null. */
ORU_API ORUDoName *oru_do_nlist_get_name(ORUDoNlist *nlist, int32_t index);

/* The first name of that text, or null. */
ORU_API ORUDoName *oru_do_nlist_get_name_by_str(ORUDoNlist *nlist, const char *text);

/* The index of the first name of that text; -1 when there is none and for a null text. */
ORU_API int32_t oru_do_nlist_index_of(ORUDoNlist *nlist, const char *text);

/*
 * Walk the names; the kind is DO_COLL_NLIST. `_iter` asserts "iter"; the other two accept a null
 * iterator and give 0 and null. `_has_next` asserts "iter->coll_type == DO_COLL_NLIST". `_get_next`
 * gives null at the end. The name that was given last may be removed during the walk.
 */
ORU_API void oru_do_nlist_iter(ORUDoNlist *nlist, ORUDoIter *iter);
ORU_API int32_t oru_do_nlist_has_next(ORUDoIter *iter);
ORU_API ORUDoName *oru_do_nlist_get_next(ORUDoIter *iter);

/* Non-zero when both have equal names in the same order. Asserts "nlist1" and "nlist2". */
ORU_API int32_t oru_do_nlist_equals(ORUDoNlist *nlist1, ORUDoNlist *nlist2);

/* ---- Adding ----
 * The result is the new length. */

/* Appends a name, counting a reference. -1 for a null name and when memory runs out. */
ORU_API int32_t oru_do_nlist_add(ORUDoNlist *nlist, ORUDoName *name);

/* Appends a new name. 0 for a null text and when memory runs out. */
ORU_API int32_t oru_do_nlist_add_string(ORUDoNlist *nlist, const char *text);

/* Appends new names from a null-terminated array of texts, each as above. The result is that of
   the last; 0 for a null or empty array. */
ORU_API int32_t oru_do_nlist_add_strnames(ORUDoNlist *nlist, const char *const *texts);

/* Append the names of another list (asserted as "other_nlist"), shared or copied. -1 when memory
   runs out; what was appended before stays. */
ORU_API int32_t oru_do_nlist_add_all(ORUDoNlist *nlist, ORUDoNlist *other_nlist);
ORU_API int32_t oru_do_nlist_add_all_copy(ORUDoNlist *nlist, ORUDoNlist *other_nlist);

/* ---- Removing ---- */

/* Removes the name at `index` from 0; does nothing past the end and for a null list. */
ORU_API void oru_do_nlist_remove(ORUDoNlist *nlist, int32_t index);

/* Empties the list. */
ORU_API void oru_do_nlist_clear(ORUDoNlist *nlist);

/* ---- Printing ---- */

/* Appends `tabs` tabs, "[name, name]" and a newline to a buffer; a null list adds nothing.
   Result 0. */
ORU_API int32_t oru_do_nlist_to_strbuf(ORUDoNlist *nlist, int32_t tabs, ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoNlist *oru_do_nlist_ref(ORUDoNlist *nlist);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_nlist_deref(ORUDoNlist *nlist);

/* Size the pools of the records and of their items. */
ORU_API void *init_chunk_poolheap_oru_do_nlist(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_nlist_item(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
