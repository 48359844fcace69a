/*
 * ORUDoTypedefMeta: the description of a type: a built-in or simple type with its constraints, an
 * enumeration, a sequence or a choice. Built once, then only read; any thread may read it.
 *
 * Every accessor asserts "meta" on a null description. What it gives is borrowed.
 */
#ifndef ORU_TYPEDEF_META_H
#define ORU_TYPEDEF_META_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* What kind of type is described. */
enum {
    ORU_TYPEDEF_SIMPLE = 1,
    ORU_TYPEDEF_ENUM = 2,
    ORU_TYPEDEF_SEQUENCE = 3,
    ORU_TYPEDEF_CHOICE = 4
};

/* ---- Making ----
 * The result has one reference, which is the caller's, and takes references of its own to what it
 * is given. Null when memory runs out. */

/*
 * A simple type on a type code: `_new_builtin` under the empty name, `_new_simpletype` under
 * `name`. `constraints` may be null. When only the part that holds code and constraints cannot be
 * had, the description comes back without it.
 */
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_new_builtin(int32_t typecode,
                                                          ORUDoConstraintList *constraints);
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_new_simpletype(ORUDoName *name, int32_t typecode,
                                                             ORUDoConstraintList *constraints);

/* An enumeration: labels, and their numbers as values of the type int. Null lists are accepted here
   and below. */
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_new_enum(ORUDoName *name, ORUDoNvlist *enums);

/* A sequence or a choice: names and types of the members. */
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_new_sequence(ORUDoName *name, ORUDoNtlist *members);
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_new_choice(ORUDoName *name, ORUDoNtlist *choices);

/* ---- Reading ---- */

/* The name; empty for a built-in type. */
ORU_API ORUDoName *oru_do_typedef_meta_get_name(ORUDoTypedefMeta *meta);

/* ORU_TYPEDEF_... */
ORU_API int32_t oru_do_typedef_meta_get_category(ORUDoTypedefMeta *meta);

/* The type code of a simple type; -3 for the other categories and without the part that holds it.
 */
ORU_API int32_t oru_do_typedef_meta_get_simple_type(ORUDoTypedefMeta *meta);

/* The constraints of a simple type; null when it has none and for the other categories. */
ORU_API ORUDoConstraintList *oru_do_typedef_meta_get_constraint_list(ORUDoTypedefMeta *meta);

/* The first of these constraints that applies, see `oru_do_constraint_list_appl_constraint`: `name`
   is the attribute that conditions without a property ask about, `props` the resource that they
   are evaluated on. Null when none does. */
ORU_API ORUDoConstraint *oru_do_typedef_meta_get_constraint(ORUDoTypedefMeta *meta, ORUDoName *name,
                                                            ORUDoProperties *props);

/* The labels of an enumeration, the members of a sequence, those of a choice; null for every other
   category. */
ORU_API ORUDoNvlist *oru_do_typedef_meta_get_enums(ORUDoTypedefMeta *meta);
ORU_API ORUDoNtlist *oru_do_typedef_meta_get_sequence_members(ORUDoTypedefMeta *meta);
ORU_API ORUDoNtlist *oru_do_typedef_meta_get_choices(ORUDoTypedefMeta *meta);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoTypedefMeta *oru_do_typedef_meta_ref(ORUDoTypedefMeta *meta);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_typedef_meta_deref(ORUDoTypedefMeta *meta);

/* Size the pools of the records and of the parts that simple types have. */
ORU_API void *init_chunk_poolheap_oru_do_typedef_meta(intptr_t count, uintptr_t flags);
ORU_API void *init_chunk_poolheap_oru_do_simple_type_meta(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
