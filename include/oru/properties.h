/*
 * ORUDoProperties: the attributes of a managed resource, an ordered table from names to values.
 * ORUDoProperty is one entry of it, which the table owns alone.
 *
 * Entries stay in the order in which they were added, whatever is replaced or removed between them.
 * A table that has grown to a limit makes a hash index beside the entries, for lookups, and keeps
 * it until it is cleared. Nothing shows the index but speed, and that a second entry of one name
 * then ends the process ("Unable to add property to hashtable %s" at level 0).
 *
 * A table takes no lock: a table that nobody changes can be read by many threads, any change needs
 * the caller's own exclusion. Operations assert a null table as "properties" or "props" and a null
 * name as "name", as their arguments are named, unless they say otherwise.
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

/* How many buckets a hash index has; 43 at start. 0 counts as 1. */
ORU_API void oru_do_properties_set_hash_table_size(uint32_t size);

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. Each new table is traced at level 7.
 */

/* An empty table. */
ORU_API ORUDoProperties *oru_do_properties_new(void);

/* A table with those entries of `other` that have a value, set in its order; names and values are
   shared. Empty for a null `other`. */
ORU_API ORUDoProperties *oru_do_properties_new_init(ORUDoProperties *other);

/* A table of names and values paired by position and set in order; null when the lengths differ.
   Asserts "nlist" and "vlist". */
ORU_API ORUDoProperties *oru_do_properties_new_from_vlist(ORUDoNlist *nlist, ORUDoVlist *vlist);

/* A deep copy: new names, clones of the values. Null also for an entry without a value and for a
   value that cannot be cloned. */
ORU_API ORUDoProperties *oru_do_properties_clone(ORUDoProperties *props);

/* ---- Entries ----
 * They assert "property" on null. Results are borrowed. */

/* The name of an entry, and its text. */
ORU_API ORUDoName *oru_do_property_get_name(ORUDoProperty *property);
ORU_API const char *oru_do_property_get_name_string(ORUDoProperty *property);

/* The value; null after oru_do_properties_reset_values. */
ORU_API ORUDoValue *oru_do_property_get_value(ORUDoProperty *property);

/* The type code of the value, -1 without one. */
ORU_API int32_t oru_do_property_get_type(ORUDoProperty *property);

/* The name of the derived type of the value; null without one. */
ORU_API const char *oru_do_property_get_type_def(ORUDoProperty *property);

/* 1 when the value is an ipAddress. */
ORU_API int32_t oru_do_property_is_ipaddresstype(ORUDoProperty *property);

/* Non-zero when values and names are equal. Asserts "prop1" and "prop2". */
ORU_API int32_t oru_do_property_equals(ORUDoProperty *prop1, ORUDoProperty *prop2);

/* Replaces the value; null changes nothing. */
ORU_API void oru_do_property_set_value(ORUDoProperty *property, ORUDoValue *value);

/* Names the derived type of the value; does nothing without one. */
ORU_API void oru_do_property_set_type_def(ORUDoProperty *property, const char *type_name);

/* ---- Reading ----
 * Entries and values are borrowed. `_n` takes the name as an object. */

/* How many entries there are. */
ORU_API int32_t oru_do_properties_get_len(ORUDoProperties *properties);

/* The entry of that name, the first when there are more; null when there is none. */
ORU_API ORUDoProperty *oru_do_properties_get_prop(ORUDoProperties *properties, const char *name);
ORU_API ORUDoProperty *oru_do_properties_get_prop_n(ORUDoProperties *properties, ORUDoName *name);

/* The entry at `index` from 0, or null. */
ORU_API ORUDoProperty *oru_do_properties_get_prop_at_index(ORUDoProperties *props, int32_t index);

/* The value of that entry; null when there is none. */
ORU_API ORUDoValue *oru_do_properties_get_value(ORUDoProperties *properties, const char *name);
ORU_API ORUDoValue *oru_do_properties_get_value_n(ORUDoProperties *properties, ORUDoName *name);

/*
 * Walk the entries; the kind is DO_COLL_PROPERTIES. They assert "iter"; `_has_next` also asserts
 * "iter->coll_type == DO_COLL_PROPERTIES". `_get_next` gives null at the end. The entry that was
 * given last may be removed during the walk.
 */
ORU_API void oru_do_properties_iter(ORUDoProperties *properties, ORUDoIter *iter);
ORU_API int32_t oru_do_properties_has_next(ORUDoIter *iter);
ORU_API ORUDoProperty *oru_do_properties_get_next(ORUDoIter *iter);

/* Non-zero when both have equal entries, value and name, in the same order. Asserts "properties1"
   and "properties2". */
ORU_API int32_t oru_do_properties_equals(ORUDoProperties *properties1,
                                         ORUDoProperties *properties2);

/*
 * The payload of the value of that name, read as `oru_do_value_get_...` reads it: `rc` gets 0, or
 * 101 when the value has another type, and then the result is 0 or null. Without such an entry, and
 * for an entry without a value, `rc` gets 106. Asserts "rc" too. `len` may be null.
 */
ORU_API uint8_t oru_do_properties_get_unsigned_byte(ORUDoProperties *props, const char *name,
                                                    int32_t *rc);
ORU_API int8_t oru_do_properties_get_byte(ORUDoProperties *props, const char *name, int32_t *rc);
ORU_API uint16_t oru_do_properties_get_unsigned_short(ORUDoProperties *props, const char *name,
                                                      int32_t *rc);
ORU_API int16_t oru_do_properties_get_short(ORUDoProperties *props, const char *name, int32_t *rc);
ORU_API uint32_t oru_do_properties_get_unsigned_int(ORUDoProperties *props, const char *name,
                                                    int32_t *rc);
ORU_API int32_t oru_do_properties_get_int(ORUDoProperties *props, const char *name, int32_t *rc);
ORU_API uint64_t oru_do_properties_get_unsigned_long(ORUDoProperties *props, const char *name,
                                                     int32_t *rc);
ORU_API int64_t oru_do_properties_get_long(ORUDoProperties *props, const char *name, int32_t *rc);
ORU_API const char *oru_do_properties_get_string(ORUDoProperties *props, const char *name,
                                                 int32_t *rc);
ORU_API int32_t oru_do_properties_get_boolean(ORUDoProperties *props, const char *name,
                                              int32_t *rc);
ORU_API float oru_do_properties_get_float(ORUDoProperties *props, const char *name, int32_t *rc);
ORU_API double oru_do_properties_get_double(ORUDoProperties *props, const char *name, int32_t *rc);
ORU_API int64_t oru_do_properties_get_datetime(ORUDoProperties *props, const char *name,
                                               int32_t *rc);
ORU_API int64_t oru_do_properties_get_duration(ORUDoProperties *props, const char *name,
                                               int32_t *rc);
ORU_API ORUDoUri *oru_do_properties_get_any_uri(ORUDoProperties *props, const char *name,
                                                int32_t *rc);
ORU_API const uint8_t *oru_do_properties_get_hex_binary(ORUDoProperties *props, const char *name,
                                                        int32_t *len, int32_t *rc);
ORU_API const uint8_t *oru_do_properties_get_ip_address(ORUDoProperties *props, const char *name,
                                                        int32_t *len, int32_t *rc);
ORU_API const uint8_t *oru_do_properties_get_nsap_address(ORUDoProperties *props, const char *name,
                                                          int32_t *len, int32_t *rc);
ORU_API const char *oru_do_properties_get_enumeration(ORUDoProperties *props, const char *name,
                                                      int32_t *rc);
ORU_API ORUDoNvlist *oru_do_properties_get_choice(ORUDoProperties *props, const char *name,
                                                  int32_t *rc);
ORU_API ORUDoNvlist *oru_do_properties_get_sequence(ORUDoProperties *props, const char *name,
                                                    int32_t *rc);
ORU_API ORUDoVlist *oru_do_properties_get_array(ORUDoProperties *props, const char *name,
                                                int32_t *rc);
ORU_API ORUDoUri *oru_do_properties_get_mr_uri(ORUDoProperties *props, const char *name,
                                               int32_t *rc);
ORU_API ORUDoUri *oru_do_properties_get_coll_uri(ORUDoProperties *props, const char *name,
                                                 int32_t *rc);
ORU_API ORUDoVlist *oru_do_properties_get_bits(ORUDoProperties *props, const char *name,
                                               int32_t *rc);

/* ---- Setting ----
 * An entry of that name gets the new value and keeps its place; otherwise an entry is added at the
 * end. An entry that cannot be had is dropped, traced at level 3 as "Failed to add property: %s\n".
 */

/* Set a value. A null value changes nothing in an entry that is there, and asserts "val" where one
   would be added. `_n` shares the name, `_l` takes `len` bytes of it. */
ORU_API void oru_do_properties_set_value(ORUDoProperties *properties, const char *name,
                                         ORUDoValue *value);
ORU_API void oru_do_properties_set_value_n(ORUDoProperties *properties, ORUDoName *name,
                                           ORUDoValue *value);
ORU_API void oru_do_properties_set_value_l(ORUDoProperties *properties, const char *name,
                                           int32_t len, ORUDoValue *value);

/* Set pairs by position until the shorter list ends. Asserts "nlist" and "vlist" too. */
ORU_API void oru_do_properties_set_values(ORUDoProperties *properties, ORUDoNlist *nlist,
                                          ORUDoVlist *vlist);

/* Sets every pair of a list. Asserts "nvlist" too. */
ORU_API void oru_do_properties_set_values_from_nvlist(ORUDoProperties *properties,
                                                      ORUDoNvlist *nvlist);

/* Sets every entry of `other` that has a value, sharing names and values. Null is accepted for
   both. Result 0. */
ORU_API int32_t oru_do_properties_set_props(ORUDoProperties *props, ORUDoProperties *other);

/*
 * Set a value of the type in the name, made of the argument as `oru_do_value_new_...` makes it: a
 * null text, null bytes or a null object give a value of type null. Result 0; 10002 when the value
 * cannot be had. A name or an entry that cannot be had drops the value, and the result is 0.
 */
ORU_API int32_t oru_do_properties_set_null(ORUDoProperties *props, const char *name);
ORU_API int32_t oru_do_properties_set_default(ORUDoProperties *props, const char *name);
ORU_API int32_t oru_do_properties_set_unsigned_byte(ORUDoProperties *props, const char *name,
                                                    uint8_t n);
ORU_API int32_t oru_do_properties_set_byte(ORUDoProperties *props, const char *name, int8_t n);
ORU_API int32_t oru_do_properties_set_unsigned_short(ORUDoProperties *props, const char *name,
                                                     uint16_t n);
ORU_API int32_t oru_do_properties_set_short(ORUDoProperties *props, const char *name, int16_t n);
ORU_API int32_t oru_do_properties_set_unsigned_int(ORUDoProperties *props, const char *name,
                                                   uint32_t n);
ORU_API int32_t oru_do_properties_set_int(ORUDoProperties *props, const char *name, int32_t n);
ORU_API int32_t oru_do_properties_set_unsigned_long(ORUDoProperties *props, const char *name,
                                                    uint64_t n);
ORU_API int32_t oru_do_properties_set_long(ORUDoProperties *props, const char *name, int64_t n);
ORU_API int32_t oru_do_properties_set_string(ORUDoProperties *props, const char *name,
                                             const char *text);
ORU_API int32_t oru_do_properties_set_boolean(ORUDoProperties *props, const char *name, int32_t n);
ORU_API int32_t oru_do_properties_set_float(ORUDoProperties *props, const char *name, float n);
ORU_API int32_t oru_do_properties_set_double(ORUDoProperties *props, const char *name, double n);
ORU_API int32_t oru_do_properties_set_datetime(ORUDoProperties *props, const char *name, int64_t n);
ORU_API int32_t oru_do_properties_set_duration(ORUDoProperties *props, const char *name, int64_t n);
ORU_API int32_t oru_do_properties_set_any_uri(ORUDoProperties *props, const char *name,
                                              ORUDoUri *object);
ORU_API int32_t oru_do_properties_set_hex_binary(ORUDoProperties *props, const char *name,
                                                 const void *bytes, int32_t n);
ORU_API int32_t oru_do_properties_set_ip_address(ORUDoProperties *props, const char *name,
                                                 const void *bytes, int32_t n);
ORU_API int32_t oru_do_properties_set_nsap_address(ORUDoProperties *props, const char *name,
                                                   const void *bytes, int32_t n);
ORU_API int32_t oru_do_properties_set_enumeration(ORUDoProperties *props, const char *name,
                                                  const char *text);
ORU_API int32_t oru_do_properties_set_choice(ORUDoProperties *props, const char *name,
                                             ORUDoNvlist *object);
ORU_API int32_t oru_do_properties_set_sequence(ORUDoProperties *props, const char *name,
                                               ORUDoNvlist *object);
ORU_API int32_t oru_do_properties_set_array(ORUDoProperties *props, const char *name,
                                            ORUDoVlist *object);
ORU_API int32_t oru_do_properties_set_mr_uri(ORUDoProperties *props, const char *name,
                                             ORUDoUri *object);
ORU_API int32_t oru_do_properties_set_coll_uri(ORUDoProperties *props, const char *name,
                                               ORUDoUri *object);
ORU_API int32_t oru_do_properties_set_bits(ORUDoProperties *props, const char *name,
                                           ORUDoVlist *object);

/* The same for a hexBinary of six bytes of the derived type "MACAddress". */
ORU_API int32_t oru_do_properties_set_mac_address(ORUDoProperties *props, const char *name,
                                                  const void *bytes);

/* ---- Adding and removing ---- */

/* Appends every entry of `other_props` (asserted), sharing names and values, without a look at the
   names that are there. */
ORU_API void oru_do_properties_add_all(ORUDoProperties *props, ORUDoProperties *other_props);

/*
 * Appends one entry with a copy of the name and a clone of the value, without a look at the names
 * that are there. Asserts "value" too. Result 1; 0 when a copy cannot be had, traced at level 3 as
 * "failed to allocated memory\n".
 */
ORU_API int32_t oru_do_properties_update(ORUDoProperties *props, ORUDoName *name,
                                         ORUDoValue *value);

/* Removes the entry at `index` from 0; does nothing past the end. */
ORU_API void oru_do_properties_remove(ORUDoProperties *props, int32_t index);

/* Removes the first entry of that name. A table with an index that has none traces "Failed to
   remove property from props table" at level 3. */
ORU_API void oru_do_properties_remove_by_name(ORUDoProperties *props, const char *name);

/* Removes all entries and the index. Null is accepted. */
ORU_API void oru_do_properties_clear(ORUDoProperties *props);

/* Takes the values out of all entries; names, order and count stay. */
ORU_API void oru_do_properties_reset_values(ORUDoProperties *props);

/* ---- Printing ---- */

/* Append `tabs` tabs and "name : value" to a buffer. A null entry adds nothing. `_with_defaults`
   marks values that are defaults. Result 0. */
ORU_API int32_t oru_do_property_to_strbuf(ORUDoProperty *property, int32_t tabs,
                                          ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_property_to_strbuf_with_defaults(ORUDoProperty *property, int32_t tabs,
                                                        ORUDoStrbuf *strbuf);

/* Append "{ name : value, name : value }" to a buffer; `tabs` is ignored, a null table adds
   nothing. `_with_defaults` marks values that are defaults. Result 0. */
ORU_API int32_t oru_do_properties_to_strbuf(ORUDoProperties *props, int32_t tabs,
                                            ORUDoStrbuf *strbuf);
ORU_API int32_t oru_do_properties_to_strbuf_with_defaults(ORUDoProperties *props, int32_t tabs,
                                                          ORUDoStrbuf *strbuf);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoProperties *oru_do_properties_ref(ORUDoProperties *props);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_properties_deref(ORUDoProperties *props);

/* Size the pools of the tables, of their entries and of the chained elements of hash indexes. */
ORU_API void *init_chunk_poolheap_oru_do_properties(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_property(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_properties_hashtable_elem(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
