/*
 * ORUDoActMeta: the description of an action of a managed resource, with its parameters; and
 * ORUDoActMetaList, the ordered list of them. Counted, and only read after they were built.
 */
#ifndef ORU_ACT_META_H
#define ORU_ACT_META_H

#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Making ---- */

/* A description with one reference, which takes references of its own to what it is given. Every
   argument may be null. Null when memory runs out. */
ORU_API ORUDoActMeta *oru_do_act_meta_new(ORUDoName *name, ORUDoPropMetaList *in_params,
                                          ORUDoPropMetaList *out_params,
                                          ORUDoPropMetaList *err_params);

/* ---- Reading ---- */

/* The name, borrowed; null for a null description. */
ORU_API ORUDoName *oru_do_act_meta_get_name(ORUDoActMeta *meta);

/* The parameters of each kind, borrowed; null where there are none. They assert "meta". */
ORU_API ORUDoPropMetaList *oru_do_act_meta_get_in_params(ORUDoActMeta *meta);
ORU_API ORUDoPropMetaList *oru_do_act_meta_get_out_params(ORUDoActMeta *meta);
ORU_API ORUDoPropMetaList *oru_do_act_meta_get_err_params(ORUDoActMeta *meta);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoActMeta *oru_do_act_meta_ref(ORUDoActMeta *meta);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_act_meta_deref(ORUDoActMeta *meta);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_act_meta(intptr_t count, uintptr_t flags);

/* ---- Lists ----
 * All assert "list" on a null list. */

/* A new empty list with one reference; null when memory runs out. */
ORU_API ORUDoActMetaList *oru_do_act_meta_list_new(void);

/* Appends; the list takes a reference. The result is the new length, -1 for a null `meta` and when
   memory runs out. */
ORU_API int32_t oru_do_act_meta_list_add(ORUDoActMetaList *list, ORUDoActMeta *meta);

/* How many there are. */
ORU_API int32_t oru_do_act_meta_list_get_len(ORUDoActMetaList *list);

/* The first action of that name, borrowed, or null. They assert "name", and "cur_name" on an entry
   that has no name. */
ORU_API ORUDoActMeta *oru_do_act_meta_list_get_act_meta_name(ORUDoActMetaList *list,
                                                             ORUDoName *name);
ORU_API ORUDoActMeta *oru_do_act_meta_list_get_act_meta_strname(ORUDoActMetaList *list,
                                                                const char *name);

/* Releases all entries and leaves an empty list. */
ORU_API void oru_do_act_meta_list_clear(ORUDoActMetaList *list);

/* Walking, see oru/iter.h; the kind is DO_COLL_ACT_META_LIST. The descriptions are borrowed. */
ORU_API void oru_do_act_meta_list_iter(ORUDoActMetaList *list, ORUDoIter *iter);
ORU_API int32_t oru_do_act_meta_list_has_next(ORUDoIter *iter);
ORU_API ORUDoActMeta *oru_do_act_meta_list_get_next(ORUDoIter *iter);

/* One more reference; null gives null. */
ORU_API ORUDoActMetaList *oru_do_act_meta_list_ref(ORUDoActMetaList *list);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_act_meta_list_deref(ORUDoActMetaList *list);

/* Sizes the pool of the lists. */
ORU_API void *init_chunk_poolheap_oru_do_act_meta_list(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
