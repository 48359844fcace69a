/*
 * ORUDoConstraint: a limit on the values of an attribute, with an optional condition that says when
 * it applies (ORUDoCondition); and ORUDoConstraintList, the ordered list of them. They come from
 * metadata and are only read afterwards.
 */
#ifndef ORU_CONSTRAINT_H
#define ORU_CONSTRAINT_H

#include "oru/condition.h"
#include "oru/iter.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Constraints ---- */

/* The text, without blanks; borrowed. Asserts "constraint". */
ORU_API const char *oru_do_constraint_get_str(ORUDoConstraint *constraint);

/* The condition, borrowed; null when it always applies. Asserts "constraint". */
ORU_API ORUDoCondition *oru_do_constraint_get_condition(ORUDoConstraint *constraint);

/* Adds "Condition: " and the expression, where there is a condition, and "Constraint: " and the
   text, each with a line feed. Adds nothing for a null constraint. */
ORU_API void oru_do_constraint_to_strbuf(ORUDoConstraint *constraint, ORUDoStrbuf *strbuf);

/* Prints that text to a stream; the number of tabs is not looked at. Result 0. */
ORU_API int32_t oru_do_print_constraint(FILE *stream, int32_t tabs, ORUDoConstraint *constraint);

/* One more reference; null gives null. */
ORU_API ORUDoConstraint *oru_do_constraint_ref(ORUDoConstraint *constraint);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_constraint_deref(ORUDoConstraint *constraint);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_constraint(intptr_t count, uintptr_t flags);

/* ---- Lists ---- */

/* A new empty list with one reference; null when memory runs out. */
ORU_API ORUDoConstraintList *oru_do_constraint_list_new(void);

/* Appends; the list takes a reference. The result is the new length, -1 for a null list, a null
   constraint, and when memory runs out. */
ORU_API int32_t oru_do_constraint_list_add(ORUDoConstraintList *list, ORUDoConstraint *constraint);

/* How many there are; -1 for null. */
ORU_API int32_t oru_do_constraint_list_get_len(ORUDoConstraintList *list);

/* The constraint at `index` from 0, borrowed; null where there is none. Asserts "list". */
ORU_API ORUDoConstraint *oru_do_constraint_list_get_constraint(ORUDoConstraintList *list,
                                                               int32_t index);

/* The first constraint without a condition, borrowed, or null. Asserts "list". */
ORU_API ORUDoConstraint *oru_do_constraint_list_get_constraint_unconditional(
    ORUDoConstraintList *list);

/* Adds the texts of the constraints in order; nothing for a null list. */
ORU_API void oru_do_constraint_list_to_strbuf(ORUDoConstraintList *list, ORUDoStrbuf *strbuf);

/* Prints these texts to a stream; the number of tabs is not looked at. Result 0. */
ORU_API int32_t oru_do_print_constraint_list(FILE *stream, int32_t tabs, ORUDoConstraintList *list);

/* Releases all entries and leaves an empty list. Asserts "list". */
ORU_API void oru_do_constraint_list_clear(ORUDoConstraintList *list);

/* Walking, see oru/iter.h; the kind is that of MR lists, DO_COLL_MR_META_LIST. The constraints are
   borrowed. */
ORU_API void oru_do_constraint_list_iter(ORUDoConstraintList *list, ORUDoIter *iter);
ORU_API int32_t oru_do_constraint_list_has_next(ORUDoIter *iter);
ORU_API ORUDoConstraint *oru_do_constraint_list_get_next(ORUDoIter *iter);

/* One more reference; null gives null. */
ORU_API ORUDoConstraintList *oru_do_constraint_list_ref(ORUDoConstraintList *list);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_constraint_list_deref(ORUDoConstraintList *list);

/* Sizes the pool of the lists. */
ORU_API void *init_chunk_poolheap_oru_do_constraint_list(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
