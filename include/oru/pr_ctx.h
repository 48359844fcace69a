/*
 * ORUPrCtx: one request to a provider. The back end makes a context for the operation, hands it to
 * the handler and deletes it afterwards; the handler asks it what is wanted, keeps the state of a
 * walk in it and leaves its errors with it.
 *
 *     walk of a collection     a context a batch, and one list, the back end's, for the whole walk
 *     everything else          a context a request
 *
 * A context is not counted and takes no lock: it belongs to the thread of the request. Its
 * arguments are lent: they outlive it.
 */
#ifndef ORU_PR_CTX_H
#define ORU_PR_CTX_H

#include "oru/base.h"
#include "oru/pr.h"
#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- Types and constants ---- */

/* Operations. Making, setting and deleting have two codes: the second is for a `mode` of 1. */
enum {
    ORU_PR_OP_GET_OPER_PROP_VALUES = 1,
    ORU_PR_OP_GET_CFG_PROP_VALUES = 2,
    ORU_PR_OP_GET_NEXT = 3,
    ORU_PR_OP_CREATE = 4,
    ORU_PR_OP_SET = 5,
    ORU_PR_OP_DELETE = 6,
    ORU_PR_OP_CREATE_MODE_1 = 7,
    ORU_PR_OP_SET_MODE_1 = 8,
    ORU_PR_OP_DELETE_MODE_1 = 9,
    ORU_PR_OP_INVOKE_ACTION = 10,
};

/* Arguments of the codes 1 and 2. */
typedef struct ORUPrReadArgs {
    ORUDoUri *uri;
    ORUDoNlist *nlist;
    ORUDoVlist *vlist; /* filled by the handler */
} ORUPrReadArgs;

/* Arguments of code 3. */
typedef struct ORUPrGetNextArgs {
    ORUDoUri *coll_uri;
    ORUDoNlist *nlist;
    ORUDoNvlist *where; /* or null */
    ORUDoNlist *order;  /* or null */
    int32_t count;
    ORUDoVtable *value_table; /* filled by the handler */
    ORUDoVlist *iter_context;
    int32_t where_enabled;
    ORUDoCondition *condition; /* the context's own, as the next two */
    ORUDoNlist *nlist_where;
    ORUDoVlist *vlist_where;
} ORUPrGetNextArgs;

/* Arguments of the codes 4 and 7. */
typedef struct ORUPrCreateArgs {
    ORUDataIfc *data_ifc;
    ORUDoUri *parent_uri;
    ORUDoName *child_ref_name;
    ORUDoName *child_mr_typename;
    ORUDoProperties *props;
} ORUPrCreateArgs;

/* Arguments of the codes 5 and 8. */
typedef struct ORUPrSetArgs {
    ORUDataIfc *data_ifc;
    ORUDoUri *uri;
    ORUDoProperties *props;
} ORUPrSetArgs;

/* Arguments of the codes 6 and 9. */
typedef struct ORUPrDeleteArgs {
    ORUDataIfc *data_ifc;
    ORUDoUri *uri;
} ORUPrDeleteArgs;

/* Arguments of code 10. */
typedef struct ORUPrActionArgs {
    ORUDoUri *uri; /* or null */
    ORUDoName *action;
    ORUDoProperties *in_props;
    ORUDoProperties *out_props; /* filled by the handler */
} ORUPrActionArgs;

struct ORUPrCtx {
    int32_t op_code;
    ORUPrCrudxHandler *crudx;
    intptr_t edit_handler; /* the provider's */
    union {
        ORUPrReadArgs read;
        ORUPrGetNextArgs get_next;
        ORUPrCreateArgs create;
        ORUPrSetArgs set;
        ORUPrDeleteArgs remove;
        ORUPrActionArgs action;
    } args; /* the one of `op_code` */
};

/* Two words of a provider, as a rule the place and the length of its bytes in a walk. */
typedef struct ORUPrHexData {
    intptr_t words[2];
} ORUPrHexData;

/* ---- Making ----
 * A context in `*oru_ctxp` and an instance record, all zero, in `*inst_ctxp`; both are the caller's
 * and go to `oru_pr_ctx_delete`. 0, or 10002 when one of them cannot be allocated, which leaves
 * both places as they were. Every pointer is asserted under its name unless null is told to be
 * accepted.
 *
 * `mode` 1 chooses the second code of the operation, everything else the first.
 */

/* Reading the attributes in `nlist` of one resource, from its operational data or its
   configuration. The handler fills `vlist`. */
ORU_API int32_t oru_pr_ctx_new_get_oper_prop_values(ORUPrCrudxHandler *crudx, ORUDoUri *uri,
                                                    ORUDoNlist *nlist, ORUDoVlist *vlist,
                                                    ORUPrCtx **oru_ctxp,
                                                    ORUPrInstanceCtx **inst_ctxp);
ORU_API int32_t oru_pr_ctx_new_get_cfg_prop_values(ORUPrCrudxHandler *crudx, ORUDoUri *uri,
                                                   ORUDoNlist *nlist, ORUDoVlist *vlist,
                                                   ORUPrCtx **oru_ctxp,
                                                   ORUPrInstanceCtx **inst_ctxp);

/*
 * A batch of `count` rows of a collection. `where` and `order` may be null.
 *
 * Items of `where` that ask about an attribute for which the handler has no get callback are
 * deleted from the list given, each with a trace "Ignoring unknown attribute %s found in where
 * clause" at level 8. The attribute is the first word of an item's name, words being parted by
 * blanks, "<", "=" and ">"; "AND" and "OR" are none and stay. What is left makes the condition of
 * the context, which has none with a null `where`. The names and values of the where clause start
 * as empty lists. Of these three each is null when there is no memory for it alone, which is no
 * failure.
 */
ORU_API int32_t oru_pr_ctx_new_get_next(ORUPrCrudxHandler *crudx, ORUDoUri *coll_uri,
                                        ORUDoNlist *nlist, ORUDoNvlist *where, ORUDoNlist *order,
                                        int32_t count, ORUDoVtable *value_table,
                                        ORUDoVlist *iter_context, ORUPrCtx **oru_ctxp,
                                        ORUPrInstanceCtx **inst_ctxp);

/* Making a resource of the type `child_mr_typename` under the reference of `parent_uri`. */
ORU_API int32_t oru_pr_ctx_new_create_resource(ORUPrCrudxHandler *crudx, ORUDataIfc *data_ifc,
                                               ORUDoUri *parent_uri, ORUDoName *child_ref_name,
                                               ORUDoName *child_mr_typename, ORUDoProperties *props,
                                               int32_t mode, ORUPrCtx **oru_ctxp,
                                               ORUPrInstanceCtx **inst_ctxp);

/* Setting properties of a resource. */
ORU_API int32_t oru_pr_ctx_new_set_properties(ORUPrCrudxHandler *crudx, ORUDataIfc *data_ifc,
                                              ORUDoUri *uri, ORUDoProperties *props, int32_t mode,
                                              ORUPrCtx **oru_ctxp, ORUPrInstanceCtx **inst_ctxp);

/* Deleting a resource. */
ORU_API int32_t oru_pr_ctx_new_delete_resource(ORUPrCrudxHandler *crudx, ORUDataIfc *data_ifc,
                                               ORUDoUri *uri, int32_t mode, ORUPrCtx **oru_ctxp,
                                               ORUPrInstanceCtx **inst_ctxp);

/* Running an action. `uri` may be null. */
ORU_API int32_t oru_pr_ctx_new_invoke_action(ORUPrCrudxHandler *crudx, ORUDoUri *uri,
                                             ORUDoName *action, ORUDoProperties *in_props,
                                             ORUDoProperties *out_props, ORUPrCtx **oru_ctxp,
                                             ORUPrInstanceCtx **inst_ctxp);

/* Frees both, with the condition and the two lists that a walk's context has of its own. Either may
   be null. Arguments stay, and so do the entries of the instance's list. */
ORU_API void oru_pr_ctx_delete(ORUPrCtx *ctx, ORUPrInstanceCtx *inst);

/* Zeroed records, freed with `ph_free_named`; null when memory runs out. */
ORU_API ORUPrInstanceCtx *oru_pr_instance_ctx_new(void);
ORU_API ORUPrHexData *oru_pr_hex_data_new(void);

/* ---- Reading ----
 * What is found is lent. 0 or null for a null context and for an operation that has no such thing,
 * whose codes are named. */

/* The operation and its handler. Any code. */
ORU_API int32_t oru_pr_orucore_ctx_get_cur_op_code(ORUPrCtx *ctx);
ORU_API ORUPrCrudxHandler *oru_pr_orucore_ctx_get_crudx_handler(ORUPrCtx *ctx);

/* A word of the provider's. Any code. Setting it in a null context does nothing. */
ORU_API void oru_pr_orucore_ctx_set_edit_handler(ORUPrCtx *ctx, intptr_t edit_handler);
ORU_API intptr_t oru_pr_orucore_ctx_get_edit_handler(ORUPrCtx *ctx);

/* The interface through which the rest of the data is read. Codes 4 to 9. */
ORU_API ORUDataIfc *oru_pr_orucore_ctx_get_data_ifc(ORUPrCtx *ctx);

/* The address: of the resource, of the collection for code 3, of the parent for the codes 4 and 7.
   Any code. */
ORU_API ORUDoUri *oru_pr_orucore_ctx_get_cur_uri(ORUPrCtx *ctx);

/* The attributes that are read. Codes 1, 2 and 3. */
ORU_API ORUDoNlist *oru_pr_orucore_ctx_get_cur_get_nlist(ORUPrCtx *ctx);

/* The properties of a new resource, codes 4 and 7, and those that are set, codes 5 and 8. */
ORU_API ORUDoProperties *oru_pr_orucore_ctx_get_cur_create_props(ORUPrCtx *ctx);
ORU_API ORUDoProperties *oru_pr_orucore_ctx_get_cur_set_props(ORUPrCtx *ctx);

/* The value of one of them, as `oru_do_properties_get_value` finds it. Codes 4, 5, 7 and 8. */
ORU_API ORUDoValue *oru_pr_orucore_ctx_get_cur_do_value_create_set_prop(ORUPrCtx *ctx,
                                                                        const char *name);

/* The arguments of an action. Code 10. */
ORU_API ORUDoProperties *oru_pr_orucore_ctx_get_action_in_props(ORUPrCtx *ctx);

/* What filters and orders the rows; null where the request has none. Code 3. */
ORU_API ORUDoNvlist *oru_pr_orucore_ctx_get_where_clause(ORUPrCtx *ctx);
ORU_API ORUDoNlist *oru_pr_orucore_ctx_get_orderby(ORUPrCtx *ctx);
ORU_API ORUDoCondition *oru_pr_orucore_ctx_get_condition(ORUPrCtx *ctx);

/* Lists for the names and values with which the provider tries that condition. Code 3. */
ORU_API ORUDoNlist *oru_pr_orucore_ctx_get_nlist_where(ORUPrCtx *ctx);
ORU_API ORUDoVlist *oru_pr_orucore_ctx_get_vlist_where(ORUPrCtx *ctx);

/* Says that the rows are filtered already, and whether nobody said so: 1, also for a null context
   and for codes other than 3. */
ORU_API void oru_pr_orucore_ctx_disable_where_clause(ORUPrCtx *ctx);
ORU_API int32_t oru_pr_orucore_ctx_is_where_clause_enabled(ORUPrCtx *ctx);

/* ---- The state of a walk ----
 * Kept in the list of the request, which the back end hands from batch to batch:
 *
 *     0  where the provider stands: hexBinary or int
 *     1  the keys of the last row: an array
 *     2  how many leading items of the where clause are used up: int, or null for none
 *
 * A list that is too short is filled up with null values. All of these do nothing and give 0 with a
 * null context, for codes other than 3 and without a list. Those that set give 0, or 10002 when
 * memory runs out; then only such fillings may have been added.
 *
 * Those that read give the status of reading the value: 0, or 101 for a value of another type, with
 * which the output is 0 or null. Where the list is too short they give 0 and leave the output
 * alone. Outputs are asserted where there is a value, but for `length_out`, which may be null.
 */

/* A copy of `length` bytes; null bytes and a negative length give a null value. What is read is
   borrowed from the list. */
ORU_API int32_t oru_pr_orucore_ctx_set_iter_context(ORUPrCtx *ctx, const void *bytes,
                                                    int32_t length);
ORU_API int32_t oru_pr_orucore_ctx_get_iter_context(ORUPrCtx *ctx, const uint8_t **bytes_out,
                                                    int32_t *length_out);

/* A number in the same place. */
ORU_API int32_t oru_pr_orucore_ctx_set_num_iter_context(ORUPrCtx *ctx, int32_t n);
ORU_API int32_t oru_pr_orucore_ctx_get_num_iter_context(ORUPrCtx *ctx, int32_t *n_out);

/* The keys, shared with the list; a null `vlist` gives a null value. What is read is borrowed; null
   when there are none. */
ORU_API int32_t oru_pr_orucore_ctx_set_prev_keys(ORUPrCtx *ctx, ORUDoVlist *vlist);
ORU_API ORUDoVlist *oru_pr_orucore_ctx_get_prev_keys(ORUPrCtx *ctx);

/* The number of items. Reading gives 0 for a null value and where the list is too short. */
ORU_API int32_t oru_pr_orucore_ctx_set_mod_where_clause_index(ORUPrCtx *ctx, int32_t n);
ORU_API int32_t oru_pr_orucore_ctx_get_mod_where_clause_index(ORUPrCtx *ctx, int32_t *n_out);

/* ---- Errors ----
 * They go to the holder that `get_ifc` of the handler gives. Without a context, a handler or a
 * holder nothing is done, and a code that is asked for is -1. */

/*
 * Sets an error of that code: "switch-LOCATION:PROCESS:TEXT", cut after 318 characters, where TEXT
 * is composed as by `printf` and cut after 255. Location and process are those of
 * `get_locationid_str` and `oru_get_process_name`, which remember them without a lock. The result
 * is `code`, also for a text that cannot be composed, with which nothing is set.
 */
ORU_API int32_t oru_pr_orucore_ctx_set_error(ORUPrCtx *ctx, int32_t code, const char *format, ...)
    ORU_PRINTF(3, 4);

/* The same for a warning, whose text stands alone. */
ORU_API int32_t oru_pr_orucore_ctx_add_warning(ORUPrCtx *ctx, int32_t code, const char *format, ...)
    ORU_PRINTF(3, 4);

/* Sets an error as it is. The result is its code; asserts "err" on null. */
ORU_API int32_t oru_pr_orucore_ctx_set_do_error(ORUPrCtx *ctx, ORUDoError *error);

/* The error held, borrowed, or null. */
ORU_API ORUDoError *oru_pr_orucore_ctx_get_error(ORUPrCtx *ctx);

/* Forgets errors and warnings. */
ORU_API void oru_pr_orucore_ctx_reset_errors(ORUPrCtx *ctx);

ORU_END_DECLS

#endif
