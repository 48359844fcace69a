/*
 * Iterators: one record walks every collection. A collection binds it (`oru_do_vlist_iter` and its
 * like), `_has_next` asks and `_get_next` advances. An iterator holds no reference: it is valid
 * while the collection is neither released nor changed. It can be bound again at any time.
 *
 *     ORUDoIter iter;
 *     oru_do_iter_init(&iter);
 *     for (oru_do_vlist_iter(list, &iter); oru_do_vlist_has_next(&iter);)
 *         use(oru_do_vlist_get_next(&iter));
 */
#ifndef ORU_ITER_H
#define ORU_ITER_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* Collection kinds. A constraint list binds the kind of MR lists, a value table that of properties
   lists. */
enum {
    DO_COLL_NLIST = 0,
    DO_COLL_VLIST = 1,
    DO_COLL_NVLIST = 2,
    DO_COLL_PROPERTIES = 3,
    DO_COLL_CONFIG_OPS = 4,
    DO_COLL_MR_META_LIST = 5,
    DO_COLL_PROP_META_LIST = 6,
    DO_COLL_PROP_ERRS = 7,
    DO_COLL_PROPERTIES_LIST = 8,
    DO_COLL_NTLIST = 9,
    DO_COLL_DTREE = 10,
    DO_COLL_ERROR_LIST = 11,
    DO_COLL_ACT_META_LIST = 12
};

struct ORUDoIter {
    uint32_t ref;      /* reference count */
    int32_t coll_type; /* DO_COLL_..., -1 while unbound */
    void *collection;  /* what is walked; borrowed */
    void *next;        /* the element that the next `_get_next` returns; null at the end */
    uint32_t position; /* 0 when bound; reserved */
};

/* A new unbound iterator with one reference, or null when memory runs out. Released with
   `oru_do_iter_deref`. */
ORU_API ORUDoIter *oru_do_iter_new(void);

/* Prepares storage of the caller, on the stack as a rule, as an unbound iterator. Such storage is
   not passed to `oru_do_iter_deref`. A null `iter` is ignored. */
ORU_API void oru_do_iter_init(ORUDoIter *iter);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_iter_deref(ORUDoIter *iter);

/* Sizes the pool that iterators come from, before the first one is made. */
ORU_API void *init_chunk_poolheap_oru_do_iter(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
