/*
 * ORUDoVlist: values in the order in which they were added, as arrays, bits and table rows hold
 * them.
 *
 * Every operation asserts "vlist" on a null list unless it says otherwise. All lookups walk from
 * the head. Only the reference count is safe among threads.
 */
#ifndef ORU_VLIST_H
#define ORU_VLIST_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. */

/* An empty list. */
ORU_API ORUDoVlist *oru_do_vlist_new(void);

/* A deep copy, made of clones of the values. A value that cannot be cloned is left out. */
ORU_API ORUDoVlist *oru_do_vlist_clone(ORUDoVlist *vlist);

/* ---- Reading ----
 * Values are borrowed. */

/* How many values there are. */
ORU_API int32_t oru_do_vlist_get_len(ORUDoVlist *vlist);

/* The value at `index` from 0, or null. */
ORU_API ORUDoValue *oru_do_vlist_get_value(ORUDoVlist *vlist, int32_t index);

/* The type code that all values have in common; -3 for mixed types and for an empty list. */
ORU_API int32_t oru_do_vlist_get_member_type(ORUDoVlist *vlist);

/*
 * Walk the values; the kind is DO_COLL_VLIST. They assert "iter"; `_has_next` also asserts
 * "iter->coll_type == DO_COLL_VLIST". `_get_next` gives null at the end. The value that was given
 * last may be removed during the walk.
 */
ORU_API void oru_do_vlist_iter(ORUDoVlist *vlist, ORUDoIter *iter);
ORU_API int32_t oru_do_vlist_has_next(ORUDoIter *iter);
ORU_API ORUDoValue *oru_do_vlist_get_next(ORUDoIter *iter);

/* Non-zero when both have equal values in the same order. Asserts "vlist1" and "vlist2". */
ORU_API int32_t oru_do_vlist_equals(ORUDoVlist *vlist1, ORUDoVlist *vlist2);

/* ---- Adding ----
 * The result is the new length, or -1 for a null value and when memory runs out. The list counts
 * its own reference on the value. */

/* Append, and insert at the head. */
ORU_API int32_t oru_do_vlist_add(ORUDoVlist *vlist, ORUDoValue *value);
ORU_API int32_t oru_do_vlist_add_first(ORUDoVlist *vlist, ORUDoValue *value);

/*
 * Inserts behind the first value that equals `after`, -1 when there is none. The end of the list
 * does not move: a value that was inserted behind the last one is there until the next append,
 * which takes its place. The length goes on counting it.
 */
ORU_API int32_t oru_do_vlist_add_after(ORUDoVlist *vlist, ORUDoValue *after, ORUDoValue *value);

/* Appends the values of another list (asserted as "other_vlist"), sharing them. What was appended
   before memory ran out stays. */
ORU_API int32_t oru_do_vlist_add_all(ORUDoVlist *vlist, ORUDoVlist *other_vlist);

/* ---- Changing ---- */

/* Replaces the value at `index` from 0; does nothing past the end. Asserts "value" too. */
ORU_API void oru_do_vlist_set_value(ORUDoVlist *vlist, int32_t index, ORUDoValue *value);

/* Removes the first value that equals `value` (asserted). */
ORU_API void oru_do_vlist_remove_value(ORUDoVlist *vlist, ORUDoValue *value);

/* Removes all values that equal `value` (asserted). The result is how many there were. */
ORU_API int32_t oru_do_vlist_remove_value_all(ORUDoVlist *vlist, ORUDoValue *value);

/* Removes, for each value of `other`, the first that equals it. A null `other` empties the list. */
ORU_API void oru_do_vlist_remove(ORUDoVlist *vlist, ORUDoVlist *other);

/* Empties the list. Null is accepted. */
ORU_API void oru_do_vlist_clear(ORUDoVlist *vlist);

/* Reverses the order in place. Null is accepted. */
ORU_API void oru_do_vlist_reverse(ORUDoVlist *vlist);

/* ---- Printing ---- */

/*
 * Append to a buffer: `tabs` tabs and "[", then the values, each on a line of its own with one tab
 * more, separated by commas, then a line with "]". A null list adds nothing. `_with_defaults` marks
 * values that are defaults. Result 0.
 */
ORU_API int32_t oru_do_vlist_to_strbuf(ORUDoVlist *vlist, int32_t tabs, ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_vlist_to_strbuf_with_defaults(ORUDoVlist *vlist, int32_t tabs,
                                                     ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoVlist *oru_do_vlist_ref(ORUDoVlist *vlist);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_vlist_deref(ORUDoVlist *vlist);

/* Size the pools of the records and of their items. */
ORU_API void *init_chunk_poolheap_oru_do_vlist(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_vlist_item(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
