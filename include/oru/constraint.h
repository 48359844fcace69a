/*
 * ORUDoConstraint: a limit on the values of an attribute, with an optional default and an optional
 * condition (ORUDoCondition) that says when it applies; and ORUDoConstraintList, the ordered list
 * of them, of which the first that applies decides. They come from metadata and are only read
 * afterwards, but for the one time when the type of their attribute becomes known.
 *
 * A constraint is a run of keywords, in any order, each with its arguments in parentheses:
 *
 *     values(1..5|7|10..*)   a range of allowed values, of the constraint's type
 *     size(1..3)             a range for the count of the elements of an array
 *     strlen(1..9)           a range for the count of the bytes of a string
 *     regex("[a-z]+")        an extended regular expression that is found somewhere in a string
 *     default(5)             the default value
 *     ordered_by(user)       accepted and kept; stands last, since it takes what follows
 *     unique()               likewise
 *
 * A regular expression can hold no parentheses, blanks, quotes, commas, bars or braces.
 *
 * All blanks are removed first, also between quotes. A text has at most 100 words and signs; what
 * cannot be read is left out without a word, and the constraint stands as far as it got.
 */
#ifndef ORU_CONSTRAINT_H
#define ORU_CONSTRAINT_H

#include "oru/condition.h"
#include "oru/iter.h"
#include "oru/range.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Types ---- */

/* Gives the value of an enumeration's label by its qualified name, `package/type.label`; lent. Null
   when there is no such label. */
typedef ORUDoValue *(*ORUDoEnumResolver)(const char *qualified_name);

/* What defaults a constraint has. */
enum {
    ORU_CONSTRAINT_NO_DEFAULT = -1,
    ORU_CONSTRAINT_DEFAULT = 0,             /* one that always holds */
    ORU_CONSTRAINT_CONDITIONAL_DEFAULT = 1, /* one under a condition, whether true or not */
};

/* ---- Making ----
 * The result has one reference, which is the caller's, and takes one of its own to `condition`,
 * null for a constraint that always applies. `str` is asserted and copied; `_l` takes at most
 * `length` bytes of it, none when that is negative. Null when memory runs out, for no fault in a
 * text. A pattern that does not compile is told as "Unable to regcomp", at level 3, and the
 * constraint stays without it. */

/* A constraint whose type is not known: the range of values takes the type of its first bound, and
   a default is a string. */
ORU_API ORUDoConstraint *oru_do_constraint_new(ORUDoCondition *condition, const char *str);
ORU_API ORUDoConstraint *oru_do_constraint_new_l(ORUDoCondition *condition, const char *str,
                                                 int32_t length);

/*
 * A constraint on values of a type code. With a `resolver`, which may be null, bounds that hold a
 * "/" are looked up as qualified labels of enumerations; where it gives a value, the text of that
 * value takes the place of the label. Without memory for these texts "Failed to allocate strbuf" is
 * traced at level 3 and the rest of the text is not read.
 */
ORU_API ORUDoConstraint *oru_do_constraint_new_t(ORUDoCondition *condition, const char *str,
                                                 int32_t typecode, ORUDoEnumResolver resolver);
ORU_API ORUDoConstraint *oru_do_constraint_new_l_t(ORUDoCondition *condition, const char *str,
                                                   int32_t length, int32_t typecode,
                                                   ORUDoEnumResolver resolver);

/*
 * Reads the text anew, with the type that the description gives: the code of a simple type, 103 for
 * an enumeration, 105 for a sequence, 104 for a choice. The new default gets the name of the
 * description's type. A null description changes nothing. Not to be called while others read the
 * constraint. Asserts "constraint".
 */
ORU_API void oru_do_constraint_set_typedef_meta(ORUDoConstraint *constraint,
                                                ORUDoTypedefMeta *typedef_meta,
                                                ORUDoEnumResolver resolver);

/* ---- Reading ----
 * All assert "constraint". What they give is borrowed, and null where the text has no such part. */

/* The text, without blanks. */
ORU_API const char *oru_do_constraint_get_str(ORUDoConstraint *constraint);

/* The condition; null when it always applies. */
ORU_API ORUDoCondition *oru_do_constraint_get_condition(ORUDoConstraint *constraint);

/* The ranges. One in which nothing could be read is there, and empty: nothing fits it. */
ORU_API ORUDoRange *oru_do_constraint_get_size(ORUDoConstraint *constraint);
ORU_API ORUDoRange *oru_do_constraint_get_values(ORUDoConstraint *constraint);
ORU_API ORUDoRange *oru_do_constraint_get_strlen(ORUDoConstraint *constraint);

/* The text of the pattern, also of one that did not compile. */
ORU_API const char *oru_do_constraint_get_regex(ORUDoConstraint *constraint);

/* The default, whatever the condition says. */
ORU_API ORUDoValue *oru_do_constraint_get_default_value(ORUDoConstraint *constraint);

/* ORU_CONSTRAINT_NO_DEFAULT, ..._DEFAULT or ..._CONDITIONAL_DEFAULT. */
ORU_API int32_t oru_do_constraint_get_type(ORUDoConstraint *constraint);

/* ---- Evaluating ----
 * `name` is what parts of a condition speak of that name no property, `props` the properties of the
 * resource; both may be null, see `oru_do_condition_eval`. */

/* Non-zero without a condition, else what it evaluates to. Asserts "constraint". */
ORU_API int32_t oru_do_constraint_is_applicable(ORUDoConstraint *constraint, ORUDoName *name,
                                                ORUDoProperties *props);

/* The default of a constraint that is applicable, borrowed; null else. Asserts "constraint". */
ORU_API ORUDoValue *oru_do_constraint_get_default(ORUDoConstraint *constraint, ORUDoName *name,
                                                  ORUDoProperties *props);

/*
 * Whether a value fits: 0 when it does, and for a null constraint; 131 when the condition is false.
 *
 * Strings: 114 for one outside of `values`, 115 for a length outside of `strlen`, 116 when the
 * pattern is not found. Arrays: 113 for a count outside of `size`, else the first result of an
 * element that is not 0, the elements being evaluated without properties. Numbers, booleans,
 * defaults, bytes, addresses, enumerations and URIs: 114 for one outside of `values`. All others,
 * null and complex values among them, fit.
 */
ORU_API int32_t oru_do_constraint_eval(ORUDoConstraint *constraint, ORUDoName *name,
                                       ORUDoValue *value, ORUDoProperties *props);

/* ---- Bounds of types ----
 * The least and greatest numbers of a type code; 0 for codes outside of the group that is named.
 * The least float and double are the smallest positive normal numbers. */

/* byte, short, int, long, dateTime, duration. */
ORU_API int64_t oru_do_constraint_get_min_signed_int_num(int32_t typecode);
ORU_API int64_t oru_do_constraint_get_max_signed_int_num(int32_t typecode);

/* unsignedByte, unsignedShort, unsignedInt, unsignedLong. */
ORU_API uint64_t oru_do_constraint_get_max_unsigned_int_num(int32_t typecode);

/* float, double. */
ORU_API double oru_do_constraint_get_min_float_num(int32_t typecode);
ORU_API double oru_do_constraint_get_max_float_num(int32_t typecode);

/* ---- Printing and life ---- */

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

/* The first constraint that is applicable, borrowed, or null. Asserts "list". */
ORU_API ORUDoConstraint *oru_do_constraint_list_appl_constraint(ORUDoConstraintList *list,
                                                                ORUDoName *name,
                                                                ORUDoProperties *props);

/* The default of the first applicable constraint that has one, borrowed, or null. Asserts "list".
 */
ORU_API ORUDoValue *oru_do_constraint_list_get_default(ORUDoConstraintList *list, ORUDoName *name,
                                                       ORUDoProperties *props);

/* ORU_CONSTRAINT_CONDITIONAL_DEFAULT when a constraint has one, ..._DEFAULT when there are only
   such that always hold, ..._NO_DEFAULT without any. Asserts "list". */
ORU_API int32_t oru_do_constraint_list_get_default_type(ORUDoConstraintList *list);

/* 1 when a constraint has a `size` range, else 0. Asserts "list". */
ORU_API int32_t oru_do_constraint_list_has_size_constraint(ORUDoConstraintList *list);

/*
 * Adds the names of the properties that conditions read to `*nlist`, each once, for the constraints
 * whose `oru_do_constraint_get_type` is `kind`. A null `*nlist` becomes a new list, which is the
 * caller's, when there is a name to add. The result is 0, or 10002 when memory runs out; what was
 * added until then stays. Asserts "list" and "nlist".
 */
ORU_API int32_t oru_do_constraint_list_get_cond_prop_names(ORUDoConstraintList *list, int32_t kind,
                                                           ORUDoNlist **nlist);

/* The result of the first constraint that is applicable, see `oru_do_constraint_eval`; 0 when none
   is, and for a null list. */
ORU_API int32_t oru_do_constraint_list_eval(ORUDoConstraintList *list, ORUDoName *name,
                                            ORUDoValue *value, ORUDoProperties *props);

/* Hands both to every constraint, see `oru_do_constraint_set_typedef_meta`. A null list is
   ignored. */
ORU_API void oru_do_constraint_list_set_typedef_meta(ORUDoConstraintList *list,
                                                     ORUDoTypedefMeta *typedef_meta,
                                                     ORUDoEnumResolver resolver);

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
