/*
 * ORUDoNvlist: named values in the order in which they were added. The keys of a URI's segments,
 * choice and sequence values and many arguments are of this kind. Names are plain texts; a name may
 * occur more than once, and lookups find the first.
 *
 * Every operation asserts "nvlist" on a null list unless it says otherwise. All lookups walk from
 * the head. Only the reference count is safe among threads.
 */
#ifndef ORU_NVLIST_H
#define ORU_NVLIST_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. */

/* An empty list. */
ORU_API ORUDoNvlist *oru_do_nvlist_new(void);

/* A list with that one item; empty with a null name or value, and when the item cannot be had. */
ORU_API ORUDoNvlist *oru_do_nvlist_new_from_item(const char *name, ORUDoValue *value);

/* A deep copy, made of clones of the values. Null also for a value that cannot be cloned. */
ORU_API ORUDoNvlist *oru_do_nvlist_clone(ORUDoNvlist *nvlist);

/* ---- Reading ----
 * Items, names and values are borrowed. */

/* How many items there are. */
ORU_API int32_t oru_do_nvlist_get_len(ORUDoNvlist *nvlist);

/* The item at `index` from 0, or null. */
ORU_API ORUDoNvlistItem *oru_do_nvlist_get_item(ORUDoNvlist *nvlist, int32_t index);

/* The first item of that name, and its value; null when there is none. Assert "name" too. */
ORU_API ORUDoNvlistItem *oru_do_nvlist_get_item_by_name(ORUDoNvlist *nvlist, const char *name);
ORU_API ORUDoValue *oru_do_nvlist_get_value(ORUDoNvlist *nvlist, const char *name);

/* What an item holds. Assert "item". */
ORU_API const char *oru_do_nvlist_item_get_name(ORUDoNvlistItem *item);
ORU_API ORUDoValue *oru_do_nvlist_item_get_value(ORUDoNvlistItem *item);

/*
 * Walk the items; the kind is DO_COLL_NVLIST. They assert "iter"; `_has_next` also asserts
 * "iter->coll_type == DO_COLL_NVLIST". `_get_next` gives null at the end. The item that was given
 * last may be deleted during the walk.
 */
ORU_API void oru_do_nvlist_iter(ORUDoNvlist *nvlist, ORUDoIter *iter);
ORU_API int32_t oru_do_nvlist_has_next(ORUDoIter *iter);
ORU_API ORUDoNvlistItem *oru_do_nvlist_get_next(ORUDoIter *iter);

/* Non-zero when both have equal items, name and value, in the same order. Asserts "nvlist1" and
   "nvlist2". */
ORU_API int32_t oru_do_nvlist_equals(ORUDoNvlist *nvlist1, ORUDoNvlist *nvlist2);

/* ---- Adding ----
 * The result is the new length, or -1 for a null name or value and when memory runs out. Names are
 * copied; the list counts its own reference on the value. */

/* Append an item. `_l` takes `len` bytes of `name`. */
ORU_API int32_t oru_do_nvlist_add(ORUDoNvlist *nvlist, const char *name, ORUDoValue *value);
ORU_API int32_t oru_do_nvlist_add_l(ORUDoNvlist *nvlist, const char *name, int32_t len,
                                    ORUDoValue *value);

/* Insert an item so that it becomes the one at `pos` from 0: the first for a `pos` below 1, the
   last for one at or past the length. */
ORU_API int32_t oru_do_nvlist_add_at(ORUDoNvlist *nvlist, const char *name, ORUDoValue *value,
                                     int32_t pos);
ORU_API int32_t oru_do_nvlist_add_l_at(ORUDoNvlist *nvlist, const char *name, int32_t len,
                                       ORUDoValue *value, int32_t pos);

/* Appends the items of another list (asserted as "other_nvlist"), sharing the values. What was
   appended before memory ran out stays. */
ORU_API int32_t oru_do_nvlist_add_all(ORUDoNvlist *nvlist, ORUDoNvlist *other_nvlist);

/*
 * Append a value of the type in the name, made of the argument as `oru_do_value_new_...` makes it:
 * a null text, null bytes or a null object give a value of type null. `uri` is `any_uri`.
 */
ORU_API int32_t oru_do_nvlist_add_null(ORUDoNvlist *nvlist, const char *name);
ORU_API int32_t oru_do_nvlist_add_unsigned_byte(ORUDoNvlist *nvlist, const char *name, uint8_t n);
ORU_API int32_t oru_do_nvlist_add_byte(ORUDoNvlist *nvlist, const char *name, int8_t n);
ORU_API int32_t oru_do_nvlist_add_unsigned_short(ORUDoNvlist *nvlist, const char *name, uint16_t n);
ORU_API int32_t oru_do_nvlist_add_short(ORUDoNvlist *nvlist, const char *name, int16_t n);
ORU_API int32_t oru_do_nvlist_add_unsigned_int(ORUDoNvlist *nvlist, const char *name, uint32_t n);
ORU_API int32_t oru_do_nvlist_add_int(ORUDoNvlist *nvlist, const char *name, int32_t n);
ORU_API int32_t oru_do_nvlist_add_unsigned_long(ORUDoNvlist *nvlist, const char *name, uint64_t n);
ORU_API int32_t oru_do_nvlist_add_long(ORUDoNvlist *nvlist, const char *name, int64_t n);
ORU_API int32_t oru_do_nvlist_add_string(ORUDoNvlist *nvlist, const char *name, const char *text);
ORU_API int32_t oru_do_nvlist_add_boolean(ORUDoNvlist *nvlist, const char *name, int32_t n);
ORU_API int32_t oru_do_nvlist_add_float(ORUDoNvlist *nvlist, const char *name, float n);
ORU_API int32_t oru_do_nvlist_add_double(ORUDoNvlist *nvlist, const char *name, double n);
ORU_API int32_t oru_do_nvlist_add_datetime(ORUDoNvlist *nvlist, const char *name, int64_t n);
ORU_API int32_t oru_do_nvlist_add_duration(ORUDoNvlist *nvlist, const char *name, int64_t n);
ORU_API int32_t oru_do_nvlist_add_any_uri(ORUDoNvlist *nvlist, const char *name, ORUDoUri *object);
ORU_API int32_t oru_do_nvlist_add_uri(ORUDoNvlist *nvlist, const char *name, ORUDoUri *object);
ORU_API int32_t oru_do_nvlist_add_mr_uri(ORUDoNvlist *nvlist, const char *name, ORUDoUri *object);
ORU_API int32_t oru_do_nvlist_add_coll_uri(ORUDoNvlist *nvlist, const char *name, ORUDoUri *object);
ORU_API int32_t oru_do_nvlist_add_hex_binary(ORUDoNvlist *nvlist, const char *name,
                                             const void *bytes, int32_t n);
ORU_API int32_t oru_do_nvlist_add_ip_address(ORUDoNvlist *nvlist, const char *name,
                                             const void *bytes, int32_t n);
ORU_API int32_t oru_do_nvlist_add_nsap_address(ORUDoNvlist *nvlist, const char *name,
                                               const void *bytes, int32_t n);
ORU_API int32_t oru_do_nvlist_add_enumeration(ORUDoNvlist *nvlist, const char *name,
                                              const char *text);
ORU_API int32_t oru_do_nvlist_add_choice(ORUDoNvlist *nvlist, const char *name,
                                         ORUDoNvlist *object);
ORU_API int32_t oru_do_nvlist_add_sequence(ORUDoNvlist *nvlist, const char *name,
                                           ORUDoNvlist *object);
ORU_API int32_t oru_do_nvlist_add_array(ORUDoNvlist *nvlist, const char *name, ORUDoVlist *object);

/* A hexBinary value of the derived type `type_name`, which is not null. */
ORU_API int32_t oru_do_nvlist_add_hex_binary_typedef(ORUDoNvlist *nvlist, const char *name,
                                                     const void *bytes, int32_t n,
                                                     const char *type_name);

/* ---- Removing ---- */

/* Remove the first item of that name, and all of them. Assert "name" too. */
ORU_API void oru_do_nvlist_delete_one(ORUDoNvlist *nvlist, const char *name);
ORU_API void oru_do_nvlist_delete_all(ORUDoNvlist *nvlist, const char *name);

/*
 * Removes the first item whose name is that of `item` and whose value compares as 0 with its value
 * by `oru_do_value_compare`. A null `item`, and one without name or value, removes nothing.
 */
ORU_API void oru_do_nvlist_delete_item(ORUDoNvlist *nvlist, ORUDoNvlistItem *item);

/* ---- Printing ---- */

/* Appends "{name : value, name : value}" to a buffer. `tabs` is ignored; a null list adds nothing.
   Result 0. */
ORU_API int32_t oru_do_nvlist_to_strbuf(ORUDoNvlist *nvlist, int32_t tabs, ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoNvlist *oru_do_nvlist_ref(ORUDoNvlist *nvlist);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_nvlist_deref(ORUDoNvlist *nvlist);

/* Size the pools of the records and of their items. */
ORU_API void *init_chunk_poolheap_oru_do_nvlist(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_nvlist_item(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
