/*
 * ORUDoCondition: a small boolean expression over the properties of a resource, such as
 * "x.values(1..5) and not y.is_null()". It says when a constraint applies, and filters rows by a
 * where clause.
 *
 *     expression  terms joined by "and", or by "or"; the two are not mixed in one group
 *     term        a leaf, with "not" in front of it if wanted; or "(" expression ")" with an
 *                 operator in it, and a blank or another "(" in front of it
 *     leaf        [property "."] keyword "(" arguments ")"
 *
 *     values(1..5|7)   the value is in the range, see oru/range.h for its bounds
 *     size(1..3)       an array has so many elements
 *     strlen(1..9)     a string has so many bytes
 *     regex("^a+$")    a part of a string matches the extended regular expression
 *     is_null()        the property is absent or null
 *     not_null()       it is there and not null
 *
 * A leaf without a property asks about the default name of the evaluation. What has to be known of
 * the ways of the language:
 *
 *   - "(a.values(1))", parentheses around a single term, is false, and true behind "not". "not"
 *     goes straight in front of a leaf.
 *   - "a.values(1) b.values(2)", terms without an operator, counts as the first alone.
 *   - An expression ends in a character that ends its last word, as ")" does. One without a token
 *     is true. More than 100 tokens are not read; a word has 127 characters at most, and one that
 *     is longer ends the reading.
 *   - Groups nest four deep.
 *
 * Faults in a text are traced at level 3 and nothing else: the condition stands as far as it came.
 *
 *     "Mixed operation\n"             "and" and "or" in one group, which keeps the first of them
 *     "Non-matching parenthesis\n"    a ")" too many; also "values( 1 )", with a blank in front
 *     "Condition deeper than %d\n"    a "(" too many, which is left out
 *     "Too many range tokens\n"       the 17th and all further arguments of a leaf, left out
 *     "Failed to compile regex\n"     the leaf is false
 *
 * A condition never changes once it is built and may be shared among threads.
 */
#ifndef ORU_CONDITION_H
#define ORU_CONDITION_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Constants ---- */

/* Operators of where clauses. 0 stands for a word that is none. */
enum {
    ORU_WHERE_EQUAL = 1,     /* "=", or nothing */
    ORU_WHERE_NOT_EQUAL = 2, /* "<>" */
    ORU_WHERE_GREATER = 3,   /* ">" */
    ORU_WHERE_LESS = 4,      /* "<" */
    ORU_WHERE_AT_LEAST = 5,  /* ">=" */
    ORU_WHERE_AT_MOST = 6,   /* "<=" */
    ORU_WHERE_LIKE = 7,      /* "LIKE" in any case */
    ORU_WHERE_AND = 8,       /* "AND " in any case */
    ORU_WHERE_OR = 9,        /* "OR " in any case */
};

/* ---- Making ----
 * The results belong to the caller; null when memory runs out, for no fault in a text. */

/* A condition from its text, or from at most `length` bytes of it; a negative length counts as 0.
   Assert "str". */
ORU_API ORUDoCondition *oru_do_condition_new(const char *str);
ORU_API ORUDoCondition *oru_do_condition_new_l(const char *str, int32_t length);

/*
 * A condition that is true for the rows that a where clause asks for. The name of an item is that
 * of a property with an operator behind it, "=" when there is none: "mtu >=". All items have to
 * hold. An item " AND " or " OR " is a group of the items in its value, a sequence; in a group of
 * the second kind one is enough, and what is compared with one property is held together, so that
 * a value of another type than the first one's is left out.
 *
 * "LIKE" takes a string and makes a regular expression of it, in which "%" is "*", unless it is the
 * last character, and "%%" is "%" and the end; with another value it adds nothing. One that does
 * not compile, such as one that begins with "%", is false, traced at level 3 as "Failed to compile
 * regex\n". An item with an unknown operator is false too.
 *
 * Null only when there is no memory for the condition itself. When memory runs out afterwards the
 * items from there on are left out, and a comparison that was begun is false. Asserts "nvlist".
 */
ORU_API ORUDoCondition *oru_do_condition_new_from_where(ORUDoNvlist *nvlist);

/* ---- Reading ---- */

/*
 * The text of the expression, borrowed. That of a where clause is built when it is first asked for;
 * null when memory runs out. It is written for people: neither "not" nor the property of a
 * `regex` stands in it, "<" and ">" read as "*:9" and "1:*", "<>" as nothing. Asserts "condition".
 */
ORU_API const char *oru_do_condition_get_expr(ORUDoCondition *condition);

/* The names of the properties that the condition reads, each once in order of appearance, borrowed.
   Empty for a where clause. Asserts "condition". */
ORU_API ORUDoNlist *oru_do_condition_get_ext_prop_names(ORUDoCondition *condition);

/* ---- Evaluating ----
 * The results are 1 or 0. All assert "condition". */

/*
 * Whether the condition holds for these properties. 1 with a null `default_name`, whatever the
 * condition says. Without properties, and for one that is absent or of another type than the leaf
 * asks about, a leaf is false, true behind "not"; but for `is_null`, which is true of an absent
 * property. A string whose text could not be had makes `strlen` and `regex` false, behind "not"
 * too.
 */
ORU_API int32_t oru_do_condition_eval(ORUDoCondition *condition, ORUDoName *default_name,
                                      ORUDoProperties *props);

/*
 * The same over names and their values in parallel lists, as rows have them. 1 when either list is
 * null. The property of a leaf counts up to the first blank, "<", "=" or ">"; a leaf without one is
 * true, behind "not" too. The first name that is equal gives the value; there is none when the
 * lists end before that.
 */
ORU_API int32_t oru_do_condition_eval_nlist_vlist(ORUDoCondition *condition, ORUDoNlist *nlist,
                                                  ORUDoVlist *vlist);

/*
 * Whether the values known so far make the condition false already; what is not known counts for
 * nothing, and so does a leaf without a property. 1 when either list is null. Behind "not" the
 * answer of a leaf is turned round, that for an unknown value too.
 *
 * A group joined by "and" is made false by the first term that is, one joined by "or" when all its
 * terms are; that of no term counts as made false with "or" and not with "and".
 */
ORU_API int32_t oru_do_condition_eval_to_false(ORUDoCondition *condition, ORUDoNlist *nlist,
                                               ORUDoVlist *vlist);

/* ---- Names of where clauses ---- */

/* Ends the name of an item in front of its operator, at the first blank, "<", "=" or ">". The
   result is the ORU_WHERE_... operator, or 0 for an unknown word. " AND " and " OR " leave an empty
   name. Asserts "name". */
ORU_API int32_t oru_do_where_util_extract_op(char *name);

/* 1 when the name of an item, up to that place, equals `name`; else 0. Asserts both. */
ORU_API int32_t oru_do_where_is_for_name(const char *item_name, const char *name);

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
