/*
 * ORUDoMrMeta: the description of a type of managed resource: its name, its access, its properties
 * and actions; and ORUDoMrMetaList, the ordered list of them.
 *
 * Descriptions are counted and may be kept after the metadata went away. They are written while
 * metadata is loaded, under its lock, and only read afterwards.
 *
 * Every operation asserts "meta" on a null description unless it says otherwise. Objects that are
 * read are borrowed.
 */
#ifndef ORU_MR_META_H
#define ORU_MR_META_H

#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* A flag that several descriptions share: the resources of one group are persistent together. */
typedef struct ORUDoMrMetaBool ORUDoMrMetaBool;

/* The access to resources of a type. */
enum { ORU_ACCESS_DELETE = 1, ORU_ACCESS_UPDATE = 2, ORU_ACCESS_READ = 4, ORU_ACCESS_CREATE = 8 };

/* ---- Making ---- */

/*
 * A description with one reference, which takes references of its own to all objects. Its qualified
 * name is made from package, `version`, which may be null, and `mr_name`. `max_access` is a set of
 * ORU_ACCESS_... `non_persistent` may be null. Null when memory runs out.
 */
ORU_API ORUDoMrMeta *oru_do_mr_meta_new(ORUDoName *pkg_name, const char *version,
                                        ORUDoName *mr_name, uint8_t max_access,
                                        ORUDoPropMetaList *prop_meta_list,
                                        ORUDoMrMetaBool *non_persistent);

/* ---- Reading ---- */

/* What the description was made with: the names, of which that of the package may be null, and the
   qualified one; the access, a set of ORU_ACCESS_...; whether it is of a library, as it was set. */
ORU_API ORUDoName *oru_do_mr_meta_get_pkg_name(ORUDoMrMeta *meta);
ORU_API ORUDoName *oru_do_mr_meta_get_mr_name(ORUDoMrMeta *meta);
ORU_API ORUDoName *oru_do_mr_meta_get_mr_fq_name(ORUDoMrMeta *meta);
ORU_API uint8_t oru_do_mr_meta_get_max_access(ORUDoMrMeta *meta);
ORU_API int32_t oru_do_mr_meta_is_lib_mr(ORUDoMrMeta *meta);

/* Whether the access is allowed, 0 or 1. */
ORU_API int32_t oru_do_mr_meta_is_createable(ORUDoMrMeta *meta);
ORU_API int32_t oru_do_mr_meta_is_readable(ORUDoMrMeta *meta);
ORU_API int32_t oru_do_mr_meta_is_updateable(ORUDoMrMeta *meta);
ORU_API int32_t oru_do_mr_meta_is_deleteable(ORUDoMrMeta *meta);

/* Non-zero when no access is allowed, which marks operational data. */
ORU_API int32_t oru_do_mr_meta_is_oper_data(ORUDoMrMeta *meta);

/* The shared flag. Asserts "meta->is_non_persistent" on a description without one. */
ORU_API int32_t oru_do_mr_meta_is_non_persistent_mr(ORUDoMrMeta *meta);

/* How many properties there are. */
ORU_API int32_t oru_do_mr_meta_get_prop_count(ORUDoMrMeta *meta);

/* The property of that name, or null. They assert "name". */
ORU_API ORUDoPropMeta *oru_do_mr_meta_get_prop_meta(ORUDoMrMeta *meta, ORUDoName *name);
ORU_API ORUDoPropMeta *oru_do_mr_meta_get_prop_meta_str(ORUDoMrMeta *meta, const char *name);

/* Add to `out` every property, the keys, the references to children, those to peers. The result is
   how many were added, -1 when memory runs out on the way. A null `out` asserts "list" when there
   is one to add, here and in the two below. */
ORU_API int32_t oru_do_mr_meta_get_all_prop_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out);
ORU_API int32_t oru_do_mr_meta_get_key_prop_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out);
ORU_API int32_t oru_do_mr_meta_get_child_ref_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out);
ORU_API int32_t oru_do_mr_meta_get_peer_ref_meta(ORUDoMrMeta *meta, ORUDoPropMetaList *out);

/*
 * Add to `out` the configuration attributes, or the operational ones: all of them for a null
 * `prefix`, those in no group for the empty text, those of the group `prefix` otherwise. The result
 * is how many were added, -1 when memory runs out on the way.
 */
ORU_API int32_t oru_do_mr_meta_get_cfg_prop_meta(ORUDoMrMeta *meta, const char *prefix,
                                                 ORUDoPropMetaList *out);
ORU_API int32_t oru_do_mr_meta_get_oper_prop_meta(ORUDoMrMeta *meta, const char *prefix,
                                                  ORUDoPropMetaList *out);

/* The actions; null where there are none. */
ORU_API ORUDoActMetaList *oru_do_mr_meta_get_act_meta_list(ORUDoMrMeta *meta);

/* The action of that name, or null. Asserts "name" where there are actions. */
ORU_API ORUDoActMeta *oru_do_mr_meta_get_act_meta(ORUDoMrMeta *meta, const char *name);

/*
 * Tells which further properties are needed to evaluate the conditions on those of a request. With
 * `kind` -1 all of `props` count, and of their constraints those without a default; with 1 those of
 * `props` that are null, and the constraints with a conditional default. The names that the
 * conditions read and that `props` lacks are added to `*extra_prop_names`; a null one becomes a new
 * list, which is the caller's, when there is a name to add.
 *
 * The result is 0; 107 for a property that the description does not know, traced at level 3 as
 * "Unable to find prop meta for %s\n", built-in attributes excepted; 10002 when memory runs out.
 * Asserts "mr_meta", "props" and "extra_prop_names".
 */
ORU_API int32_t oru_do_mr_meta_get_cond_prop_names(ORUDoMrMeta *mr_meta, ORUDoProperties *props,
                                                   int32_t kind, ORUDoNlist **extra_prop_names);

/* The descriptions of what implements a library resource, or null. Asserts "lib_meta". */
ORU_API ORUDoMrMetaList *oru_do_mr_meta_get_impl_mr_meta(ORUDoMrMeta *lib_meta);

/* ---- Changing ---- */

/* Tells whether the description is of a library resource, 0 for no. */
ORU_API void oru_do_mr_meta_set_is_lib_mr(ORUDoMrMeta *meta, int32_t is_lib_mr);

/* Replaces the shared flag; null clears. A null description is ignored. */
ORU_API void oru_do_mr_meta_set_non_persistent_bool(ORUDoMrMeta *meta,
                                                    ORUDoMrMetaBool *non_persistent);

/* Replaces the actions; null clears. */
ORU_API void oru_do_mr_meta_set_act_meta_list(ORUDoMrMeta *meta, ORUDoActMetaList *list);

/* Add a property, at the end or at `index`, to the list, which is made when needed. The result is
   that of the list's operation, 0 when the list cannot be made. */
ORU_API int32_t oru_do_mr_meta_add_prop_meta(ORUDoMrMeta *meta, ORUDoPropMeta *prop_meta);
ORU_API int32_t oru_do_mr_meta_add_prop_meta_at_index(ORUDoMrMeta *meta, ORUDoPropMeta *prop_meta,
                                                      int32_t index);

/* Adds the description of what implements a library resource. The result is the new length of that
   list, -1 for a null `impl_meta` or when memory runs out, 0 when the list cannot be made. Asserts
   "lib_meta". */
ORU_API int32_t oru_do_mr_meta_add_impl_mr_meta(ORUDoMrMeta *lib_meta, ORUDoMrMeta *impl_meta);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoMrMeta *oru_do_mr_meta_ref(ORUDoMrMeta *meta);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_mr_meta_deref(ORUDoMrMeta *meta);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_mr_meta(intptr_t count, uintptr_t flags);

/* ---- Shared flags ---- */

/* A flag with one reference; null when memory runs out. */
ORU_API ORUDoMrMetaBool *oru_do_mr_meta_bool_new(int32_t value);

/* Writes it, for all that share it. Asserts "meta_bool". */
ORU_API void oru_do_mr_meta_bool_set_bool(ORUDoMrMetaBool *meta_bool, int32_t value);

/* One more reference; null gives null. */
ORU_API ORUDoMrMetaBool *oru_do_mr_meta_bool_ref(ORUDoMrMetaBool *meta_bool);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_mr_meta_bool_deref(ORUDoMrMetaBool *meta_bool);

/* Sizes the pool of the flags. */
ORU_API void *init_chunk_poolheap_oru_do_mr_meta_bool(intptr_t count, uintptr_t flags);

/* ---- Lists ----
 * They assert "list" on a null list unless told otherwise. */

/* A new empty list with one reference; null when memory runs out. */
ORU_API ORUDoMrMetaList *oru_do_mr_meta_list_new(void);

/* Appends; the list takes a reference. The result is the new length, -1 for a null list, a null
   `meta`, and when memory runs out. */
ORU_API int32_t oru_do_mr_meta_list_add(ORUDoMrMetaList *list, ORUDoMrMeta *meta);

/* How many there are. */
ORU_API int32_t oru_do_mr_meta_list_get_len(ORUDoMrMetaList *list);

/* The description at `index` from 0, borrowed; null where there is none. */
ORU_API ORUDoMrMeta *oru_do_mr_meta_list_get_mr_meta(ORUDoMrMetaList *list, int32_t index);

/* The position of this very description, -1 when it is not there and for nulls. */
ORU_API int32_t oru_do_mr_meta_list_index_of(ORUDoMrMetaList *list, ORUDoMrMeta *meta);

/* Releases all entries and leaves an empty list. */
ORU_API void oru_do_mr_meta_list_clear(ORUDoMrMetaList *list);

/* Walking, see oru/iter.h; the kind is DO_COLL_MR_META_LIST. The descriptions are borrowed. */
ORU_API void oru_do_mr_meta_list_iter(ORUDoMrMetaList *list, ORUDoIter *iter);
ORU_API int32_t oru_do_mr_meta_list_has_next(ORUDoIter *iter);
ORU_API ORUDoMrMeta *oru_do_mr_meta_list_get_next(ORUDoIter *iter);

/* One more reference; null gives null. */
ORU_API ORUDoMrMetaList *oru_do_mr_meta_list_ref(ORUDoMrMetaList *list);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_mr_meta_list_deref(ORUDoMrMetaList *list);

/* Sizes the pool of the lists. */
ORU_API void *init_chunk_poolheap_oru_do_mr_meta_list(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
