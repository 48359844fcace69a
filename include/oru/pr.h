/*
 * The provider framework: the tables of operations through which the library, the back end and the
 * providers reach each other, and the handler that a provider makes for each kind of managed
 * resource it serves.
 *
 * A table is a record of function pointers in a fixed order; entries that the library does not call
 * keep their place as `void *`. Each entry gets the table itself as its first argument, so whoever
 * fills a table embeds it at the head of a record of its own. Results are result codes (oru/rc.h)
 * unless told otherwise. Arguments are lent to the call; what a call wants to keep it references.
 * The tables have no locks: an entry runs in the thread of the request that calls it.
 */
#ifndef ORU_PR_H
#define ORU_PR_H

#include "oru/types.h"

ORU_BEGIN_DECLS

/* ---- The error holder: where a provider or a back end leaves what went wrong ---- */

struct ORUErrorIfc {
    void *reserved_1;

    /* The error held, or null. Lent: the holder keeps its reference. */
    ORUDoError *(*get_error)(ORUErrorIfc *holder);

    /* Holds a new error of that code and zero-terminated text. */
    void (*set_error)(ORUErrorIfc *holder, int32_t code, const char *text);

    void *reserved_4;

    /* Holds the error given. */
    void (*set_do_error)(ORUErrorIfc *holder, ORUDoError *error);

    void *reserved_6;

    /* Adds a warning, which does not make the request fail. */
    void (*add_warning)(ORUErrorIfc *holder, int32_t code, const char *text);

    void *reserved_8;
    void *reserved_9;
    void *reserved_10;
    void *reserved_11;
    void *reserved_12;
    void *reserved_13;

    /* Forgets errors and warnings. */
    void (*reset_errors)(ORUErrorIfc *holder);
};

/* ---- The data interface: reading single resources and running their actions ----
 * For the two `get_..._prop_values` and the two `get_..._props`: 0 is success, 102 (no such
 * resource) counts as success with whatever was filled, any other code fails that one read. */

struct ORUDataIfc {
    void *priv; /* the interface's own record */
    void *reserved_2;
    void *reserved_3;
    void *reserved_4;

    /*
     * Puts one value per name of `nlist` into `vlist`, which is empty, in the order of `nlist`; a
     * null value stands for an attribute that has none. `return_default` is 1 unless the document
     * said `return-default="false"`: attributes that are not set then give their defaults.
     */
    int32_t (*get_cfg_prop_values)(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *nlist,
                                   uint8_t return_default, ORUDoVlist *vlist);

    /* The same for operational attributes. */
    int32_t (*get_oper_prop_values)(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoNlist *nlist,
                                    ORUDoVlist *vlist);

    /* Puts all configuration properties of the resource into `props`, which is empty. `filter` is
       null. */
    int32_t (*get_cfg_props)(ORUDataIfc *ifc, ORUDoUri *uri, void *filter, ORUDoProperties *props);

    void *reserved_8;

    /* The same for operational properties; `props` may hold the configuration properties. */
    int32_t (*get_oper_props)(ORUDataIfc *ifc, ORUDoUri *uri, void *filter, ORUDoProperties *props);

    void *reserved_10;
    void *reserved_11;
    void *reserved_12;

    /* The URI against which relative URIs of a document are made absolute, or null. Lent for the
       call of `oru_dtl_get_next`, which asks once, the interface of its first argument. */
    ORUDoUri *(*get_context_uri)(ORUDataIfc *ifc);

    void *reserved_14;
    void *reserved_15;
    void *reserved_16;
    void *reserved_17;

    /* Runs the action on the resource and puts its results into `out_props`, which is empty.
       `in_props` holds the arguments. Any code but 0 is a failure. */
    int32_t (*invoke_action)(ORUDataIfc *ifc, ORUDoUri *uri, ORUDoName *action,
                             ORUDoProperties *in_props, ORUDoProperties *out_props);

    /* The holder with the failure of the last call, or null. Lent. */
    ORUErrorIfc *(*get_error_ifc)(ORUDataIfc *ifc);
};

/* ---- A cursor over the rows of a collection ---- */

struct ORUDtlCursor {
    void *reserved_1;
    void *reserved_2;

    /* Releases the cursor, which is not used again. The result is not looked at. */
    int32_t (*cursor_close)(ORUDtlCursor *cursor);

    /*
     * Appends up to `count` rows to `table`; 0 leaves the number to the cursor. A row is an
     * `ORUDoVlist` with one value per name of the attribute list that was given at opening, in that
     * order. Lists begin with `_uri` and `_mr`: the first value of a row is the row's address, a
     * value of type `mrURI`. 0: more rows may follow. 1: this was the last batch, which may be
     * empty. Above 1: a failure.
     */
    int32_t (*cursor_get_next)(ORUDtlCursor *cursor, uint32_t count, ORUDoVtable *table);

    /* The holder with the failure of the last call, or null. Lent. */
    ORUErrorIfc *(*cursor_get_error_ifc)(ORUDtlCursor *cursor);
};

/* ---- The collection interface: opening cursors ----
 * 0 with `out_cursor` set, or a code, with which no cursor is kept. `where` and `order` may be
 * null. */

struct ORUCollIfc {
    void *reserved_1;
    void *reserved_2;
    void *reserved_3;
    void *reserved_4;
    void *reserved_5;
    void *reserved_6;
    void *reserved_7;
    void *reserved_8;

    /* Opens a cursor over the configuration rows of the collection `uri`. `return_default` as told
       above. */
    int32_t (*new_config_cursor)(ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *attributes,
                                 ORUDoNvlist *where, ORUDoNlist *order, uint8_t return_default,
                                 ORUDtlCursor **out_cursor);

    /* Opens a cursor over its operational rows. */
    int32_t (*new_oper_cursor)(ORUCollIfc *ifc, ORUDoUri *uri, ORUDoNlist *attributes,
                               ORUDoNvlist *where, ORUDoNlist *order, ORUDtlCursor **out_cursor);
};

/* ---- The handler: the table through which the library and the back end reach the code of a
        provider for one kind of resource ----
 * The library fills the first word and `get_ifc`, and calls `get_next`. All other entries are
 * between the back end and its providers; what their operations are told stands in a request
 * context (oru/pr_ctx.h), which has a constructor for each: reading operational and configuration
 * values, walking a collection, creating, setting, deleting, actions. */

typedef struct ORUPrCrudxHandlerPriv ORUPrCrudxHandlerPriv;

struct ORUPrCrudxHandler {
    ORUPrCrudxHandlerPriv *priv; /* the library's own record */
    void *reserved_2;
    void *reserved_3;

    /*
     * Filled by the provider: appends a batch of at most `count` rows of the collection `uri`, any
     * number for 0, to `value_table`, each with one value per name of `nlist` in that order, and
     * puts what the next call needs to go on into `iter_context`, which is empty at first. `where`
     * may be null. 1 on the last batch, which may be empty; 0 and all else when more may follow.
     */
    int32_t (*get_next)(ORUPrCrudxHandler *handler, ORUDoUri *uri, ORUDoNlist *nlist,
                        ORUDoNvlist *where, ORUDoNlist *order, int32_t count,
                        ORUDoVtable *value_table, ORUDoVlist *iter_context);

    void *reserved_5;
    void *reserved_6;
    void *reserved_7;
    void *reserved_8;
    void *reserved_9;
    void *reserved_10;
    void *reserved_11;
    void *reserved_12;
    void *reserved_13;
    void *reserved_14;
    void *reserved_15;

    /* Filled by the library: the owner that the handler was made with, which begins with the error
       holder. Asserts "ifc" on a null handler. */
    ORUErrorIfc *(*get_ifc)(ORUPrCrudxHandler *handler);

    void *reserved_17;
    void *reserved_18;
};

/* A callback of a provider. The library stores these and gives them back, and never calls them:
   their arguments are a matter between the provider and its framework. */
typedef void (*ORUPrCallback)(void);

/*
 * A new handler with `get_ifc` in place and every other entry null, or null when memory runs out:
 * "Unable to allocate memory" or "Unable to create hashmap" at level 3. `owner` is lent for the
 * handler's life; it begins with an `ORUErrorIfc`. Traces "Done" at level 7. A handler is not
 * counted: it lives until `oru_pr_crudx_handler_delete`.
 */
ORU_API ORUPrCrudxHandler *oru_pr_crudx_handler_new(void *owner);

/* Ends a handler. Null is ignored. Nothing that the callbacks refer to is touched. */
ORU_API void oru_pr_crudx_handler_delete(ORUPrCrudxHandler *handler);

/* ---- Registering ----
 * Done while the handler is set up, by one thread. Names are kept by address and outlive the
 * handler. A second registration of a name has the outcome of `hashAdd`: it fails. */

/*
 * Registers what reads and what writes a property; either may be null. 0, also for a null handler
 * or one without its private record, with which nothing is registered. 10002 when an add failed
 * ("Unable to allocate memory" at level 3); the other one is tried all the same.
 */
ORU_API int32_t oru_pr_crudx_handler_add_prop_cb(ORUPrCrudxHandler *handler, const char *name,
                                                 ORUPrCallback get_cb, ORUPrCallback set_cb);

/* Registers what runs an action, as it stands. Results as above. */
ORU_API int32_t oru_pr_crudx_handler_add_action_cb(ORUPrCrudxHandler *handler, const char *name,
                                                   ORUPrCallback cb);

/* ---- Looking up ----
 * The stored callback; null when there is none of that name, for a null handler and for one without
 * its private record. */
ORU_API ORUPrCallback oru_pr_crudx_handler_get_prop_get_cb(ORUPrCrudxHandler *handler,
                                                           const char *name);
ORU_API ORUPrCallback oru_pr_crudx_handler_get_prop_set_cb(ORUPrCrudxHandler *handler,
                                                           const char *name);
ORU_API ORUPrCallback oru_pr_crudx_handler_get_action_cb(ORUPrCrudxHandler *handler,
                                                         const char *name);

/* ---- The instance data of a provider ---- */

/* Four words of the provider, in a list of its instance. Freed with `ph_free_named` by whoever took
   the list. */
typedef struct ORUPrInstanceEntry ORUPrInstanceEntry;
struct ORUPrInstanceEntry {
    intptr_t words[4];
    ORUPrInstanceEntry *next;
};

struct ORUPrInstanceCtx {
    intptr_t data[2];            /* the provider's */
    ORUPrInstanceEntry *entries; /* the last one added comes first */
};

/* Adds an entry at the head of the instance's list. 0, or 10002 when it cannot be allocated
   ("Unable to allocate memory" at level 3). The library never reads the list. Asserts "inst". */
ORU_API int32_t oru_pr_add_crudx_handler(ORUPrInstanceCtx *inst, intptr_t a, intptr_t b, intptr_t c,
                                         intptr_t d);

/* What stands above an address, lent, as `oru_do_uri_get_parent_uri` has it. */
ORU_API ORUDoUri *oru_pr_get_parent_uri(ORUDoUri *uri);

/* Where a back end publishes its action entry for providers. Null at load; the library neither sets
   nor calls it. */
extern ORU_API ORUPrCallback oru_pr_invoke_action_fn;

ORU_END_DECLS

#endif
