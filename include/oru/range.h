/*
 * ORUDoRange: a small set of allowed values, as an ordered list of elements such as "1 to 5", "7"
 * or "10 and up". Constraints limit values, counts and lengths with it, conditions test values with
 * it. All values of a range have one type. A range grows by additions until it is used; from then
 * on it is only read, which many threads may do at once.
 *
 * Operations that take a range assert "range" on null unless they say otherwise.
 */
#ifndef ORU_RANGE_H
#define ORU_RANGE_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Types and constants ---- */

/* One element of a range; it lives as long as its range. */
typedef struct oru_range_el oru_range_el;

/* What an element asks of a value. "Equals" and "differs" also compare a string with other types of
   text and bytes. Values that cannot be compared match no element. */
enum {
    ORU_RANGE_EQUAL = 1,     /* it equals `lower` */
    ORU_RANGE_NOT_EQUAL = 2, /* it differs from `lower` */
    ORU_RANGE_LESS = 3,      /* it is less than `lower` */
    ORU_RANGE_AT_MOST = 4,   /* it is at most `lower` */
    ORU_RANGE_GREATER = 5,   /* it is greater than `lower` */
    ORU_RANGE_AT_LEAST = 6,  /* it is at least `lower` */
    ORU_RANGE_BETWEEN = 7,   /* it is at least `lower` and at most `upper` */
};

/* ---- Making ----
 * The results belong to the caller; null when memory runs out. Bounds that do not fit the type are
 * left out without a word. */

/* An empty range of values of a type code; -3 leaves the type to the first bound that is added. */
ORU_API ORUDoRange *oru_do_range_new_t(int32_t typecode);

/*
 * A range from its text, asserted under "str": elements between "|", each a bound, or two bounds
 * around "..", "*" for an open side, as in "1..5|7|10..*". All parentheses and blanks are removed
 * first. The first form takes the type from the first bound, see `oru_do_range_add_lower_upper`.
 */
ORU_API ORUDoRange *oru_do_range_new_s(const char *str);
ORU_API ORUDoRange *oru_do_range_new_s_t(int32_t typecode, const char *str);

/*
 * A range from `count` tokens, as `oru_do_condition_tokenize` gives them: a bound, or two with ".."
 * between them; a "|" behind a bound is passed over, and ".." with nothing behind it takes its
 * bound along. `tokens` is asserted when `count` is above 0.
 */
ORU_API ORUDoRange *oru_do_range_new_toks_t(int32_t typecode, const char *const *tokens,
                                            int32_t count);

/* ---- Adding ----
 * Elements go to the end. Results are 0, 101 for a value of another type than the range's, 10002
 * when memory runs out. An addition clears the text that the range keeps. */

/*
 * An element of two bounds as texts. A bound is null where there is none, "*" where its side is
 * open; a text that does not fit the type counts as "*". With both bounds the element is "between";
 * with one it is "at most" or "at least" when the other side is open, else "equals"; without any
 * nothing is added, and the result is 0.
 *
 * A bound that begins with "{" is a value in JSON. A string loses the double quotes around it. In a
 * range of an unsigned type a lower bound below 0 counts as 0.
 *
 * A range whose type is -3 takes it from `lower`: digits alone make a long, "0.0" and what holds a
 * "." and is a number above 0.00001 in size a double, an address an ipAddress, "true" and "false" a
 * boolean, "null" a null. All else makes a string: text between quotes, "*", and every negative
 * integer, so a range that begins below 0 is to be given its type.
 */
ORU_API int32_t oru_do_range_add_lower_upper(ORUDoRange *range, const char *lower,
                                             const char *upper);

/*
 * An element of ORU_RANGE_... `op`, with a reference to `val1` as its lower bound, asserted under
 * that name, and to `val2`, which may be null, as its upper one. An `op` that is none is kept; it
 * matches nothing and ends the evaluation. A range of type -3 takes the type of `val1`.
 */
ORU_API int32_t oru_do_range_add_value(ORUDoRange *range, int32_t op, ORUDoValue *val1,
                                       ORUDoValue *val2);

/* "Between" two longs or doubles, both included; "equals" a string. */
ORU_API int32_t oru_do_range_add_long(ORUDoRange *range, int64_t lower, int64_t upper);
ORU_API int32_t oru_do_range_add_double(ORUDoRange *range, double lower, double upper);
ORU_API int32_t oru_do_range_add_string(ORUDoRange *range, const char *text);

/* ---- Evaluating ---- */

/*
 * 1 when an element matches the value, asserted under "value"; 0 when none does, and for an empty
 * range. Elements are tried in order up to one whose op is none, which is traced at level 6 as
 * "range constraint failed at op %d - %s\n" with the values, when the logger's level is 6 or more.
 */
ORU_API int32_t oru_do_range_eval_value(ORUDoRange *range, ORUDoValue *value);

/* The same for a value that is made for the call; 0 when memory runs out. */
ORU_API int32_t oru_do_range_eval_long(ORUDoRange *range, int64_t number);
ORU_API int32_t oru_do_range_eval_double(ORUDoRange *range, double number);
ORU_API int32_t oru_do_range_eval_string(ORUDoRange *range, const char *text);

/* 1 when the number is at most the first element's `lower`; 0 else, and for an empty range. */
ORU_API int32_t oru_do_range_eval_max_long(ORUDoRange *range, int64_t number);

/* ---- Reading ---- */

/* 1 for a range of exactly one element, which has no upper bound. The op is not looked at: "*..5"
   passes as "5" does. */
ORU_API int32_t oru_do_range_is_single_value(ORUDoRange *range);
ORU_API int32_t oru_do_range_has_strict_max_value(ORUDoRange *range);

/* The `lower` of the first element, borrowed; null for an empty range. */
ORU_API ORUDoValue *oru_do_range_get_first_value(ORUDoRange *range);

/*
 * The text of the range, borrowed; valid until the next addition. Elements stand between "|", but
 * for those with an upper bound, which nothing separates from what is before them. "Less" and
 * "greater" print as "*:9" and "1:*", which cannot be read back, "differs" not at all. A range from
 * a text that gave no element keeps that text. Null when memory runs out.
 */
ORU_API const char *oru_do_range_get_range_str(ORUDoRange *range);

/* The elements in order, null at the end; their parts, borrowed. Null gives null or 0. `upper` is
   null where there is none. */
ORU_API oru_range_el *oru_do_range_get_range_el(ORUDoRange *range);
ORU_API oru_range_el *oru_do_range_get_next_range_el(oru_range_el *el);
ORU_API int32_t oru_do_range_el_get_op(oru_range_el *el);
ORU_API ORUDoValue *oru_do_range_el_get_lower(oru_range_el *el);
ORU_API ORUDoValue *oru_do_range_el_get_upper(oru_range_el *el);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoRange *oru_do_range_ref(ORUDoRange *range);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_range_deref(ORUDoRange *range);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_range(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
