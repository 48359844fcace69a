/*
 * ORUDoCondition: a small boolean expression over the properties of a resource, such as
 * "x.values(1..5) and not y.is_null()". It says when a constraint applies, and filters rows by a
 * where clause.
 *
 * A condition never changes once it is built and may be shared among threads, but for the text of
 * one that was made from a where clause, which is built when it is first asked for.
 */
#ifndef ORU_CONDITION_H
#define ORU_CONDITION_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Reading ---- */

/* The text of the expression, borrowed. Asserts "condition". */
ORU_API const char *oru_do_condition_get_expr(ORUDoCondition *condition);

/* ---- Tokens ---- */

/*
 * Cuts a condition or constraint into tokens: words, "(", ")", "|", "..", "," and literals in
 * braces. A parenthesis or bar behind a word only ends the word; a word that nothing ends is left
 * out. `tokens` and `types` have room for `max_tokens`; tokens are freed with `ph_free_named`.
 *
 * The result is the number of tokens. `errp`, which the caller clears, becomes 107 when there are
 * more tokens than room, or a word of more than 127 characters, 10002 without memory; that ends the
 * work. Asserts its pointers.
 *
 * Types: 1 word, 2 "(", 3 ")", 4 "|", 5 "..", 6 ",", and the words whose part behind the last dot
 * is 7 and, 8 or, 9 not, 10 values, 11 size, 12 strlen, 13 regex, 14 is_null, 15 not_null,
 * 16 ordered_by, 17 unique, 18 default.
 */
ORU_API int32_t oru_do_condition_tokenize(const char *str, int32_t max_tokens, char **tokens,
                                          int32_t *types, int32_t *errp);

/* ---- Life ---- */

/* One more reference; null gives null. */
ORU_API ORUDoCondition *oru_do_condition_ref(ORUDoCondition *condition);

/* Releases one reference; null is ignored. */
ORU_API void oru_do_condition_deref(ORUDoCondition *condition);

/* Sizes the pool of the records. */
ORU_API void *init_chunk_poolheap_oru_do_condition(intptr_t count, uintptr_t flags);

ORU_END_DECLS

#endif
