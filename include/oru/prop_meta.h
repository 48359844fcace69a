/*
 * ORUDoPropMeta: the description of one property of a managed resource, a key, a reference or an
 * attribute, or of a parameter of an action; and ORUDoPropMetaList, the ordered list of them.
 *
 * Descriptions are counted and may be kept after the metadata went away. They are written while
 * metadata is loaded, under its lock, and only read afterwards.
 */
#ifndef ORU_PROP_META_H
#define ORU_PROP_META_H

#include "oru/constraint.h"
#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* What a property is. */
enum {
    ORU_PROP_PARAM = -1,
    ORU_PROP_KEY = 0,
    ORU_PROP_REF = 1,
    ORU_PROP_CONFIG = 2,
    ORU_PROP_OPER = 3
};

/* Whom a reference leads to. */
enum { ORU_REF_NONE = 0, ORU_REF_CHILD = 1, ORU_REF_PARENT = 2, ORU_REF_PEER = 3 };

/* How many values or resources there are. */
enum { ORU_MULTIPLICITY_ONE = 1, ORU_MULTIPLICITY_MANY = 2 };

/* ---- Making ---- */

/*
 * A description with one reference, which takes references of its own to both names.
 *
 * `key_idx` counts from 1 within a group of keys, 0 for what is no key. `first_key_in_group` is
 * null for the first key of a group and for what is no key; no reference is taken. `typecode` is
 * -3 until the type is known. `type_name` is the type as it was written, the qualified name of the
 * target for a reference. `max_access` 0 marks operational data. Null when memory runs out.
 */
ORU_API ORUDoPropMeta *oru_do_prop_meta_new(ORUDoName *name, int32_t category,
                                            int32_t is_primary_key, int32_t key_idx,
                                            ORUDoPropMeta *first_key_in_group, int32_t typecode,
                                            ORUDoName *type_name, int32_t multiplicity,
                                            int32_t ref_role, uint8_t max_access,
                                            int32_t persistent);

/* ---- Reading ----
 * All assert "meta". Objects are borrowed. */

/* What the description was made with, see oru_do_prop_meta_new: the category is ORU_PROP_..., the
   multiplicity ORU_MULTIPLICITY_..., the role ORU_REF_..., the type code that of oru/value.h or -3;
   the flags are 0 for no. Typedef and constraints are those that were set; null where there are
   none. */
ORU_API ORUDoName *oru_do_prop_meta_get_name(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_get_category(ORUDoPropMeta *meta);
ORU_API ORUDoName *oru_do_prop_meta_get_type_name(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_get_typecode(ORUDoPropMeta *meta);
ORU_API ORUDoTypedefMeta *oru_do_prop_meta_get_typedef_meta(ORUDoPropMeta *meta);
ORU_API uint8_t oru_do_prop_meta_get_max_access(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_is_primary_key(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_get_key_idx(ORUDoPropMeta *meta);
ORU_API ORUDoPropMeta *oru_do_prop_meta_get_first_key_in_group(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_get_multiplicity(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_get_ref_role(ORUDoPropMeta *meta);
ORU_API ORUDoConstraintList *oru_do_prop_meta_get_constraint_list(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_is_persistent(ORUDoPropMeta *meta);

/* The constraint at `index` from 0; null past the end and without a list. */
ORU_API ORUDoConstraint *oru_do_prop_meta_get_constraint(ORUDoPropMeta *meta, int32_t index);

/* Non-zero when `max_access` is 0. */
ORU_API int32_t oru_do_prop_meta_is_oper_data(ORUDoPropMeta *meta);

/* Always 1: access is decided by the bits of the resource, not by those of the property. */
ORU_API int32_t oru_do_prop_meta_is_readable(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_is_writeable(ORUDoPropMeta *meta);
ORU_API int32_t oru_do_prop_meta_is_createable(ORUDoPropMeta *meta);

/* 1 for the attributes that every resource has: "_mr", "_uri", "_pendingAttrs", "_snmpIdx" and
   "_sequenceNumber". Asserts "name". */
ORU_API int32_t oru_attribute_is_builtin(const char *name);

/* ---- Changing ----
 * All assert "meta". */

/* Write the type code, and the role of a reference, ORU_REF_...; neither is checked. */
ORU_API void oru_do_prop_meta_set_typecode(ORUDoPropMeta *meta, int32_t typecode);
ORU_API void oru_do_prop_meta_set_ref_role(ORUDoPropMeta *meta, int32_t ref_role);

/*
 * Takes a reference to the description of the type and hands it, with `resolver`, to the property's
 * constraints, which are read anew for that type. `resolver` may be null. An earlier description is
 * not released: a property gets its type once.
 */
ORU_API void oru_do_prop_meta_set_typedef_meta(ORUDoPropMeta *meta, ORUDoTypedefMeta *typedef_meta,
                                               ORUDoEnumResolver resolver);

/* Takes a reference to the list, asserted under "constraint_list". An earlier list is not
   released. */
ORU_API void oru_do_prop_meta_set_constraint_list(ORUDoPropMeta *meta,
                                                  ORUDoConstraintList *constraint_list);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoPropMeta *oru_do_prop_meta_ref(ORUDoPropMeta *meta);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_prop_meta_deref(ORUDoPropMeta *meta);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_prop_meta(intptr_t count, uintptr_t flags);

/* ---- Lists ----
 * All assert "list" on a null list. */

/* A new empty list with one reference; null when memory runs out. */
ORU_API ORUDoPropMetaList *oru_do_prop_meta_list_new(void);

/* Appends; the list takes a reference. The result is the new length, -1 for a null `meta` and when
   memory runs out. */
ORU_API int32_t oru_do_prop_meta_list_add(ORUDoPropMetaList *list, ORUDoPropMeta *meta);

/*
 * Inserts so that `meta` stands at `index` from 0; into an empty list whatever the index. The
 * result is 1, also for a null `meta`, which adds nothing; -1 when the list is too short, the index
 * negative, or memory runs out.
 */
ORU_API int32_t oru_do_prop_meta_list_add_at_index(ORUDoPropMetaList *list, ORUDoPropMeta *meta,
                                                   int32_t index);

/* How many there are. */
ORU_API int32_t oru_do_prop_meta_list_get_len(ORUDoPropMetaList *list);

/* The description at `index` from 0, borrowed; null where there is none. */
ORU_API ORUDoPropMeta *oru_do_prop_meta_list_get_prop_meta(ORUDoPropMetaList *list, int32_t index);

/* The first description of that name, borrowed, or null. They assert "name", and "cur_name" on an
   entry that has no name. */
ORU_API ORUDoPropMeta *oru_do_prop_meta_list_get_prop_meta_name(ORUDoPropMetaList *list,
                                                                ORUDoName *name);
ORU_API ORUDoPropMeta *oru_do_prop_meta_list_get_prop_meta_strname(ORUDoPropMetaList *list,
                                                                   const char *name);

/* Releases all entries and leaves an empty list. */
ORU_API void oru_do_prop_meta_list_clear(ORUDoPropMetaList *list);

/* Walking, see oru/iter.h; the kind is DO_COLL_PROP_META_LIST. The descriptions are borrowed. */
ORU_API void oru_do_prop_meta_list_iter(ORUDoPropMetaList *list, ORUDoIter *iter);
ORU_API int32_t oru_do_prop_meta_list_has_next(ORUDoIter *iter);
ORU_API ORUDoPropMeta *oru_do_prop_meta_list_get_next(ORUDoIter *iter);

/* One more reference; null gives null. */
ORU_API ORUDoPropMetaList *oru_do_prop_meta_list_ref(ORUDoPropMetaList *list);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_prop_meta_list_deref(ORUDoPropMetaList *list);

/* Sizes the pool of the lists. */
ORU_API void *init_chunk_poolheap_oru_do_prop_meta_list(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
