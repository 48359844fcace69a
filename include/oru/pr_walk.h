/*
 * Helpers for providers that serve collections: where a batch starts, which items of the where
 * clause are left to test, which attributes have to be read, whether rows have to be sorted, and
 * what tells one query from another.
 *
 * A where clause is an `ORUDoNvlist`. The name of an item is that of an attribute, with a blank and
 * a comparison behind it as a rule: "mtu >=". The items " AND " and " OR " hold sequences. An order
 * is an `ORUDoNlist` of names, with a blank and "desc" or "snmp" behind them where the order is not
 * ascending.
 *
 * Everything runs in the thread of the request; nothing is traced.
 */
#ifndef ORU_PR_WALK_H
#define ORU_PR_WALK_H

#include "oru/pr_ctx.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Constants ---- */

/* Where a batch starts. */
enum {
    ORU_PR_ITER_FIRST = 0, /* with the first row */
    ORU_PR_ITER_WHERE = 1, /* behind the keys of the where clause, which compares as the keys do */
    ORU_PR_ITER_KEYS = 2,  /* at the keys of a where clause that compares the last key otherwise, or
                              behind those of the last row */
    ORU_PR_ITER_STATE = 3, /* where the provider's own state says */
};

/* ---- Where a batch starts ----
 * `keys` are the keys of the collection as a where clause would name them, "slot >", "port >"; null
 * only with a `key_count` below 1. The other pointers are asserted under their names, but for
 * `ctx`, which may be null. */

/*
 * The position that the first items of a where clause give, one for each key and in their order.
 * The result is one of the first three types above.
 *
 * The items must have the names of the keys without their last character; of the last one the whole
 * name tells 1 from 2. Their values go to `out_keys`, and `*out_where` becomes a new list of the
 * items behind them, with shared values, which is the caller's. Without memory for all of that list
 * the place stays as it was.
 *
 * 0 when an item is missing or has another name, and when a value finds no place: `out_keys` is
 * cleared and gets a null value for each key. Only an item of the last key with another name leaves
 * `out_keys` as it is by then.
 */
ORU_API int32_t get_iter_ctx_from_where_clause(ORUDoNvlist *where, int32_t key_count,
                                               const char *const *keys, ORUDoVlist *out_keys,
                                               ORUDoNvlist **out_where);

/*
 * What is left to test: in `*out_where` a new list, which is the caller's, of the items of `where`
 * behind those that the walk has used up (see `oru_pr_orucore_ctx_get_mod_where_clause_index`),
 * without those whose attribute the handler of `ctx` cannot read. `where` stays as it is.
 *
 * The result is the status of reading that number. With another one than 0, with a negative number,
 * which is no failure, and without memory for the list the place stays as it was.
 */
ORU_API int32_t get_modified_where_from_where_clause(ORUPrCtx *ctx, ORUDoNvlist *where,
                                                     ORUDoNvlist **out_where);

/*
 * All of it for a batch: `*type_out` is always set. `iter_context` is the list of the walk. A value
 * in its first place is the provider's state. The keys of the last row, in its second place, are
 * added to `out_keys`. With neither the position is that of the where clause of `ctx`, and the
 * number of items that it takes is remembered for the batches to come; without a where clause the
 * walk starts with the first row. `*out_where`, null on entry, gets what is left to test, where
 * there is a where clause; it stays null when that gave no position.
 *
 * The result is 0, the status of reading the number of used items, or 10002 when a key finds no
 * memory.
 */
ORU_API int32_t oru_pr_get_iter_ctx_types(ORUPrCtx *ctx, ORUDoVlist *iter_context,
                                          int32_t key_count, const char *const *keys,
                                          int32_t *type_out, ORUDoVlist *out_keys,
                                          ORUDoNvlist **out_where);

/* ---- What has to be read, and in which order ---- */

/*
 * Appends to `attrs` the names of the order and then those of the where clause, up to their first
 * blank; an item " AND " adds an empty name. Nothing is left out because it is there already. The
 * names of the order also go to `order_names`, and a character for each, without a zero behind
 * them, to `directions`: 'd' for "desc", 's' for "snmp", 'a' for any other word and for none.
 *
 * `where` and `order` may be null. The others are asserted under their names, the last two only
 * when there is an order. A name that finds no memory is left out.
 */
ORU_API void oru_pr_get_where_and_orderby_attrs(ORUDoNvlist *where, ORUDoNlist *order,
                                                ORUDoNlist *attrs, ORUDoNlist *order_names,
                                                char *directions);

/*
 * Whether rows that come in the order of their keys satisfy the order: 1 for a null or empty
 * `order` and for one that is just the list of the keys, else 0. `keys` are bare names; they are
 * asserted when there are as many names in the order.
 */
ORU_API int32_t oru_pr_is_order_by_key(ORUDoNlist *order, const char *const *keys,
                                       int32_t key_count);

/* Whether the where clause of a walk asks for numbers of rows: 1 with an item "_resultIndex >", or
   an item "_resultIndex >=" whose value is an integer other than 0. 0 otherwise, for a null context
   and for one that is no walk. */
ORU_API int32_t oru_pr_need_result_idx(ORUPrCtx *ctx);

/*
 * Appends what tells a query from another: the JSON form of `where`, then "+" and the name for each
 * name of `names1` and of `names2`. All three may be null. The result is the error state of the
 * buffer, 10002 without one; a name then asserts "strbuf".
 */
ORU_API int32_t oru_pr_make_get_next_id(ORUDoNvlist *where, ORUDoNlist *names1, ORUDoNlist *names2,
                                        ORUDoStrbuf *buf);

/* ---- Whole tables ---- */

/*
 * Walks the collection `uri` by the handler's `get_next`, which is asked for `attrs` and behind
 * them the attributes of order and where, without an order and with a count of 0, until it gives 1.
 * Nothing else ends the walk. The rows are added to `result`, all columns of them, in the wanted
 * order. `keys` are bare names. `where` and `order` may be null; the handler, `attrs` and `result`
 * are asserted.
 *
 * In the columns `_resultIndex` and `_resultCount`, where `attrs` has them, rows get their number
 * from 1 and the number of rows, as unsignedInt. That number is the one of all rows when they had
 * to be sorted, and of each batch when they came as wanted.
 *
 * 0, also when `get_next` failed; 10002 when memory runs out, before the first call, or for a row
 * that then is not in the result.
 */
ORU_API int32_t oru_pr_get_sorted_vtable(ORUPrCrudxHandler *handler, ORUDoUri *uri,
                                         ORUDoNlist *attrs, ORUDoNvlist *where, ORUDoNlist *order,
                                         int32_t key_count, const char *const *keys,
                                         ORUDoVtable *result);

/* Releases a table, as a callback of what keeps tables. Null is ignored; the first argument is not
   looked at. */
ORU_API void oru_pr_vtable_free_fn(void *unused, void *vtable);

ORU_END_DECLS

#endif
