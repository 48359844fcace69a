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

/*
 * Append a value of the type in the name, made of the argument as `oru_do_value_new_...` makes it:
 * a null text, null bytes or a null object give a value of type null.
 */
ORU_API int32_t oru_do_vlist_add_null(ORUDoVlist *vlist);
ORU_API int32_t oru_do_vlist_add_unsigned_byte(ORUDoVlist *vlist, uint8_t n);
ORU_API int32_t oru_do_vlist_add_byte(ORUDoVlist *vlist, int8_t n);
ORU_API int32_t oru_do_vlist_add_unsigned_short(ORUDoVlist *vlist, uint16_t n);
ORU_API int32_t oru_do_vlist_add_short(ORUDoVlist *vlist, int16_t n);
ORU_API int32_t oru_do_vlist_add_unsigned_int(ORUDoVlist *vlist, uint32_t n);
ORU_API int32_t oru_do_vlist_add_int(ORUDoVlist *vlist, int32_t n);
ORU_API int32_t oru_do_vlist_add_unsigned_long(ORUDoVlist *vlist, uint64_t n);
ORU_API int32_t oru_do_vlist_add_long(ORUDoVlist *vlist, int64_t n);
ORU_API int32_t oru_do_vlist_add_string(ORUDoVlist *vlist, const char *text);
ORU_API int32_t oru_do_vlist_add_string_l(ORUDoVlist *vlist, const char *text, int32_t n);
ORU_API int32_t oru_do_vlist_add_boolean(ORUDoVlist *vlist, int32_t n);
ORU_API int32_t oru_do_vlist_add_float(ORUDoVlist *vlist, float n);
ORU_API int32_t oru_do_vlist_add_double(ORUDoVlist *vlist, double n);
ORU_API int32_t oru_do_vlist_add_datetime(ORUDoVlist *vlist, int64_t n);
ORU_API int32_t oru_do_vlist_add_duration(ORUDoVlist *vlist, int64_t n);
ORU_API int32_t oru_do_vlist_add_any_uri(ORUDoVlist *vlist, ORUDoUri *object);
ORU_API int32_t oru_do_vlist_add_mr_uri(ORUDoVlist *vlist, ORUDoUri *object);
ORU_API int32_t oru_do_vlist_add_coll_uri(ORUDoVlist *vlist, ORUDoUri *object);
ORU_API int32_t oru_do_vlist_add_hex_binary(ORUDoVlist *vlist, const void *bytes, int32_t n);
ORU_API int32_t oru_do_vlist_add_ip_address(ORUDoVlist *vlist, const void *bytes, int32_t n);
ORU_API int32_t oru_do_vlist_add_nsap_address(ORUDoVlist *vlist, const void *bytes, int32_t n);
ORU_API int32_t oru_do_vlist_add_enumeration(ORUDoVlist *vlist, const char *text);
ORU_API int32_t oru_do_vlist_add_choice(ORUDoVlist *vlist, ORUDoNvlist *object);
ORU_API int32_t oru_do_vlist_add_sequence(ORUDoVlist *vlist, ORUDoNvlist *object);
ORU_API int32_t oru_do_vlist_add_array(ORUDoVlist *vlist, ORUDoVlist *object);

/* A hexBinary value of the derived type `type_name`, which is not null. */
ORU_API int32_t oru_do_vlist_add_hex_binary_typedef(ORUDoVlist *vlist, const void *bytes, int32_t n,
                                                    const char *type_name);

/*
 * For each name of `nlist` in order, appends as a collURI value what `oru_do_uri_new_coll` makes of
 * `uri` and the name. Result 0; 10000 for a null argument; 10002 when a URI, a value or its place
 * cannot be had, with the list as far as it came.
 */
ORU_API int32_t oru_do_vlist_add_child_ref_names(ORUDoVlist *vlist, ORUDoUri *uri,
                                                 ORUDoNlist *nlist);

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

/* Traces the text at level 7, when the logger's level is at least `level`. */
ORU_API void oru_do_vlist_trace(ORUDoVlist *vlist, uint32_t level);

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
